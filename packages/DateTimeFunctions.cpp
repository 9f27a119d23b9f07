// The miscellaneous package's date and time functions, and the calendar
// under them: date-time numbers to parts and back, to text and back, and the
// local clock.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <iterator>

#include "packages/MiscPackage.h"

namespace tavo {

namespace {

using namespace std::chrono;

constexpr sys_days Epoch = year(1899) / 12 / 30;
constexpr int64_t MillisecondsPerDay = 86400000;
constexpr int64_t FirstDay = (sys_days(year(1) / 1 / 1) - Epoch).count();
constexpr int64_t LastDay = (sys_days(year(9999) / 12 / 31) - Epoch).count();

bool TryEncodeDate(int Year, int Month, int Day, double& Value) {
  // Checked before the calendar types see them: those keep a month or a
  // day in a byte, where 257 would pass as 1.
  if (Year < 1 || Year > 9999 || Month < 1 || Month > 12 || Day < 1 || Day > 31) return false;
  const year_month_day Date{year(Year), month(unsigned(Month)), day(unsigned(Day))};
  if (!Date.ok()) return false;
  Value = double((sys_days(Date) - Epoch).count());
  return true;
}

bool TryEncodeTime(int Hour, int Minute, int Second, int Millisecond, double& Value) {
  if (Hour < 0 || Hour > 23 || Minute < 0 || Minute > 59 || Second < 0 || Second > 59 || Millisecond < 0 ||
      Millisecond > 999)
    return false;
  Value = double(((Hour * 60 + Minute) * 60 + Second) * 1000 + Millisecond) / MillisecondsPerDay;
  return true;
}

// How a text form is named in messages, and what it looks like.
const char16_t* KindName(TDateTimeText Kind) {
  return Kind == dttDate ? u"date" : Kind == dttTime ? u"time" : u"date and time";
}

const char16_t* KindForm(TDateTimeText Kind) {
  return Kind == dttDate ? u"YYYY-MM-DD" : Kind == dttTime ? u"HH:MM:SS" : u"YYYY-MM-DD HH:MM:SS";
}

// Reads a text from left to right.
class TDateTimeScanner {
 public:
  explicit TDateTimeScanner(StringView Text) : FText(Text) {}
  bool AtEnd() const { return FPos == FText.size(); }
  bool Skip(char16_t C) {
    if (AtEnd() || FText[FPos] != C) return false;
    ++FPos;
    return true;
  }
  // One to MaxDigits decimal digits; -1 when there are none.
  int Number(int MaxDigits, int* Digits = nullptr) {
    int Value = 0, Count = 0;
    for (; Count < MaxDigits && !AtEnd() && FText[FPos] >= u'0' && FText[FPos] <= u'9'; ++Count, ++FPos)
      Value = Value * 10 + (FText[FPos] - u'0');
    if (Digits) *Digits = Count;
    return Count ? Value : -1;
  }
  bool Date(double& Value) {
    const int Year = Number(4);
    if (!Skip(u'-')) return false;
    const int Month = Number(2);
    if (!Skip(u'-')) return false;
    return TryEncodeDate(Year, Month, Number(2), Value);
  }
  bool Time(double& Value) {
    const int Hour = Number(2);
    if (!Skip(u':')) return false;
    const int Minute = Number(2);
    int Second = 0, Millisecond = 0;
    if (Skip(u':')) {
      Second = Number(2);
      if (Skip(u'.')) {
        int Digits;
        Millisecond = Number(3, &Digits);
        for (; Digits > 0 && Digits < 3; ++Digits) Millisecond *= 10;
      }
    }
    return TryEncodeTime(Hour, Minute, Second, Millisecond, Value);
  }
  // Blanks, or a "T", between a date and a time.
  bool Separator() {
    if (Skip(u'T')) return true;
    const size_t Start = FPos;
    while (Skip(u' ')) {
    }
    return FPos > Start;
  }

 private:
  StringView FText;
  size_t FPos = 0;
};

constexpr const char16_t* MonthNames[] = {u"January", u"February", u"March",     u"April",   u"May",      u"June",
                                          u"July",    u"August",   u"September", u"October", u"November", u"December"};
constexpr const char16_t* DayNames[] = {u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                                        u"Thursday", u"Friday", u"Saturday"};

// A number of a pattern: bare for a single letter, padded for more.
String PatternNumber(int Value, size_t Letters, int Padded = 2) {
  return Letters == 1 ? IntToStr(Value) : Format(u"%.*d", Padded, Value);
}

// A name of a pattern: its first three letters, or whole for four letters or more.
String PatternName(const char16_t* Name, size_t Letters) { return Letters >= 4 ? String(Name) : String(Name, 3); }

// Now on the local clock, to the millisecond.
double LocalNow() {
  const auto Now = system_clock::now();
  const auto Whole = floor<seconds>(Now);
  const std::time_t Seconds = system_clock::to_time_t(Whole);
  std::tm Local{};
  localtime_r(&Seconds, &Local);
  // A leap second counts as the last second of its minute.
  return EncodeDate(Local.tm_year + 1900, Local.tm_mon + 1, Local.tm_mday) +
         EncodeTime(Local.tm_hour, Local.tm_min, std::min(Local.tm_sec, 59),
                    int(duration_cast<milliseconds>(Now - Whole).count()));
}

ITavoValue FloatValue(double Value) { return Make<TTavoValue>(Value); }

}  // namespace

double EncodeDate(int Year, int Month, int Day) {
  double Value;
  if (!TryEncodeDate(Year, Month, Day, Value)) throw ETavoException(Format(SInvalidDate, Year, Month, Day));
  return Value;
}

double EncodeTime(int Hour, int Minute, int Second, int Millisecond) {
  double Value;
  if (!TryEncodeTime(Hour, Minute, Second, Millisecond, Value))
    throw ETavoException(Format(SInvalidTime, Hour, Minute, Second, Millisecond));
  return Value;
}

TDateTimeParts DecodeDateTime(double Value) {
  // Checked roughly before the conversion to an integer, which must not
  // overflow, and exactly after rounding, which may carry into a day more.
  const auto OutOfRange = [Value] { return ETavoException(Format(SDateTimeOutOfRange, Value)); };
  if (!(Value >= FirstDay - 1 && Value <= LastDay + 2)) throw OutOfRange();
  const int64_t Total = int64_t(std::floor(Value * MillisecondsPerDay + 0.5));
  const int64_t Days = Total >= 0 ? Total / MillisecondsPerDay : -((-Total - 1) / MillisecondsPerDay) - 1;
  if (Days < FirstDay || Days > LastDay) throw OutOfRange();
  int Time = int(Total - Days * MillisecondsPerDay);
  const sys_days Date = Epoch + days(Days);
  const year_month_day Calendar(Date);
  TDateTimeParts Parts;
  Parts.Year = int(Calendar.year());
  Parts.Month = int(unsigned(Calendar.month()));
  Parts.Day = int(unsigned(Calendar.day()));
  Parts.DayOfWeek = int(weekday(Date).c_encoding());
  Parts.Millisecond = Time % 1000;
  Time /= 1000;
  Parts.Second = Time % 60;
  Time /= 60;
  Parts.Minute = Time % 60;
  Parts.Hour = Time / 60;
  return Parts;
}

String DateTimeToText(double Value, TDateTimeText Kind) {
  const TDateTimeParts Parts = DecodeDateTime(Value);
  String Result;
  if (Kind != dttTime) Result = Format(u"%.4d-%.2d-%.2d", Parts.Year, Parts.Month, Parts.Day);
  if (Kind == dttDateTime) Result += u' ';
  if (Kind != dttDate) {
    Result += Format(u"%.2d:%.2d:%.2d", Parts.Hour, Parts.Minute, Parts.Second);
    if (Parts.Millisecond != 0) Result += Format(u".%.3d", Parts.Millisecond);
  }
  return Result;
}

double TextToDateTime(StringView Text, TDateTimeText Kind) {
  const String Trimmed = Trim(Text);
  TDateTimeScanner Scanner(Trimmed);
  double Date = 0, Time = 0;
  bool Valid = false;
  switch (Kind) {
    case dttDate:
      Valid = Scanner.Date(Date);
      break;
    case dttTime:
      Valid = Scanner.Time(Time);
      break;
    case dttDateTime:
      Valid = Scanner.Date(Date) && (Scanner.AtEnd() || (Scanner.Separator() && Scanner.Time(Time)));
      break;
  }
  if (!Valid || !Scanner.AtEnd())
    throw ETavoException(Format(SInvalidDateTimeText, KindName(Kind), KindForm(Kind), Text));
  return Date + Time;
}

String FormatDateTime(StringView Pattern, double Value) {
  const TDateTimeParts Parts = DecodeDateTime(Value);
  String Result;
  for (size_t I = 0; I < Pattern.size();) {
    const char16_t Letter = Pattern[I];
    if (Letter == u'\'' || Letter == u'"') {
      const size_t End = std::min(Pattern.find(Letter, I + 1), Pattern.size());
      Result += Pattern.substr(I + 1, End - I - 1);
      I = End + 1;
      continue;
    }
    const char16_t Upper = UpCaseChar(Letter);
    size_t Run = 1;
    while (I + Run < Pattern.size() && UpCaseChar(Pattern[I + Run]) == Upper) ++Run;
    switch (Upper) {
      case u'Y':
        Result += Run <= 2 ? Format(u"%.2d", Parts.Year % 100) : Format(u"%.4d", Parts.Year);
        break;
      case u'M':
        Result += Run <= 2 ? PatternNumber(Parts.Month, Run) : PatternName(MonthNames[Parts.Month - 1], Run);
        break;
      case u'D':
        Result += Run <= 2 ? PatternNumber(Parts.Day, Run) : PatternName(DayNames[Parts.DayOfWeek], Run);
        break;
      case u'H':
        Result += PatternNumber(Parts.Hour, Run);
        break;
      case u'N':
        Result += PatternNumber(Parts.Minute, Run);
        break;
      case u'S':
        Result += PatternNumber(Parts.Second, Run);
        break;
      case u'Z':
        Result += Run < 3 ? IntToStr(Parts.Millisecond) : PatternNumber(Parts.Millisecond, Run, 3);
        break;
      default:
        Result += Pattern.substr(I, Run);
        break;
    }
    I += Run;
  }
  return Result;
}

TAVO_SETUP void TTimeFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"time", u"Returns the seconds since midnight on the local clock, with their fraction", u"", 0, 0);
}

void TTimeFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double Now = LocalNow();
  Result = FloatValue((Now - std::floor(Now)) * 86400.0);
}

TAVO_SETUP void TSystemDateTimeFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  // In the order of TSystemDateTimeFunctionType.
  static constexpr TFunctionMetaData Kinds[] = {
      {u"system-datetime", u"Returns the date and time now on the local clock as a date-time number", u"", 0, 0},
      {u"system-date", u"Returns today on the local clock as a date-time number, a whole number of days", u"", 0, 0},
      {u"system-time", u"Returns the time of day on the local clock as a fraction of a day", u"", 0, 0},
  };
  static_assert(std::size(Kinds) == sdtTime + 1);
  SetKindMetaData(*this, Kinds, FType);
}

void TSystemDateTimeFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double Now = LocalNow();
  const double Today = std::floor(Now);
  Result = FloatValue(FType == sdtDateTime ? Now : FType == sdtDate ? Today : Now - Today);
}

TAVO_SETUP void TDateTimeStringFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  // In the order of TDateTimeStringFunctionType.
  static constexpr TFunctionMetaData Kinds[] = {
      {u"str-datetime", u"Returns the date-time number of a text such as \"2024-02-29 13:45:00\"",
       u"<string-expression>", 1, 1},
      {u"str-date", u"Returns the date-time number of a date text such as \"2024-02-29\"", u"<string-expression>", 1,
       1},
      {u"str-time", u"Returns the date-time number of a time text such as \"13:45:00.250\"", u"<string-expression>", 1,
       1},
      {u"datetime-str", u"Returns the date and time of a date-time number as YYYY-MM-DD HH:MM:SS",
       u"<numeric-expression>", 1, 1},
      {u"date-str", u"Returns the date of a date-time number as YYYY-MM-DD", u"<numeric-expression>", 1, 1},
      {u"time-str", u"Returns the time of a date-time number as HH:MM:SS", u"<numeric-expression>", 1, 1},
      {u"datetime-str-format",
       u"Returns a date-time number written by a pattern of yyyy, yy, m, mm, mmm, mmmm, d, dd, ddd, dddd, "
       u"h, hh, n, nn, s, ss, z, zzz and quoted text",
       u"<format-string-expression> <numeric-expression>", 2, 2},
  };
  static_assert(std::size(Kinds) == dtsDateTimeStrFormat + 1);
  SetKindMetaData(*this, Kinds, FType);
}

void TDateTimeStringFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  switch (FType) {
    case dtsStrDateTime:
    case dtsStrDate:
    case dtsStrTime: {
      const TDateTimeText Kind = FType == dtsStrDate ? dttDate : FType == dtsStrTime ? dttTime : dttDateTime;
      Result = FloatValue(TextToDateTime(FunCall.Argument(0, Context)->GetAsString(), Kind));
      break;
    }
    case dtsDateTimeStr:
    case dtsDateStr:
    case dtsTimeStr: {
      const TDateTimeText Kind = FType == dtsDateStr ? dttDate : FType == dtsTimeStr ? dttTime : dttDateTime;
      Result = Make<TTavoValue>(DateTimeToText(FunCall.Argument(0, Context)->GetAsNumeric(), Kind), dtString);
      break;
    }
    case dtsDateTimeStrFormat: {
      const String Pattern = FunCall.Argument(0, Context)->GetAsString();
      Result = Make<TTavoValue>(FormatDateTime(Pattern, FunCall.Argument(1, Context)->GetAsNumeric()), dtString);
      break;
    }
  }
}

TAVO_SETUP void TDecodeDateTimeFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  static constexpr const char16_t* Parts[] = {u"year",   u"month",  u"day",        u"hour",
                                              u"minute", u"second", u"millisecond"};
  const String Part = Parts[FType];
  SetMetaData(u"decode-" + Part, u"Returns the " + Part + u" of a date-time number", u"<numeric-expression>", 1, 1);
}

void TDecodeDateTimeFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const TDateTimeParts Parts = DecodeDateTime(FunCall.Argument(0, Context)->GetAsNumeric());
  const int Values[] = {Parts.Year,   Parts.Month,  Parts.Day,        Parts.Hour,
                        Parts.Minute, Parts.Second, Parts.Millisecond};
  Result = Make<TTavoValue>(int32_t(Values[FType]), dtInteger);
}

TAVO_SETUP void TEncodeDateTimeFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  // In the order of TEncodeDateTimeFunctionType.
  static constexpr TFunctionMetaData Kinds[] = {
      {u"encode-date", u"Returns the date-time number of a date, a whole number of days",
       u"<year-integer-expression> <month-integer-expression> <day-integer-expression>", 3, 3},
      {u"encode-time", u"Returns the date-time number of a time of day, a fraction of a day",
       u"<hour-integer-expression> <minute-integer-expression> <second-integer-expression> "
       u"<millisecond-integer-expression>",
       4, 4},
  };
  static_assert(std::size(Kinds) == edtTime + 1);
  SetKindMetaData(*this, Kinds, FType);
}

void TEncodeDateTimeFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  auto Part = [&](int Index) { return FunCall.Argument(Index, Context)->GetAsInteger(); };
  if (FType == edtDate)
    Result = FloatValue(EncodeDate(Part(0), Part(1), Part(2)));
  else
    Result = FloatValue(EncodeTime(Part(0), Part(1), Part(2), Part(3)));
}

}  // namespace tavo
