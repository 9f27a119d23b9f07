#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>

#include "engine/InferenceEngine.h"
#include "packages/MiscPackage.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

constexpr int FirstDay = -693593;  // 0001-01-01
constexpr int LastDay = 2958465;   // 9999-12-31

auto Tied(const TDateTimeParts& P) {
  return std::make_tuple(P.Year, P.Month, P.Day, P.Hour, P.Minute, P.Second, P.Millisecond);
}

bool IsLeap(int Year) { return Year % 4 == 0 && (Year % 100 != 0 || Year % 400 == 0); }

TEST(DateTimeFunctionsTest, DaysCountFromTheLastDaysOf1899) {
  EXPECT_EQ(EncodeDate(1899, 12, 30), 0.0);
  EXPECT_EQ(EncodeDate(1899, 12, 29), -1.0);
  EXPECT_EQ(EncodeDate(1900, 1, 1), 2.0);
  EXPECT_EQ(EncodeDate(1970, 1, 1), 25569.0);
  EXPECT_EQ(EncodeDate(2000, 1, 1), 36526.0);
  EXPECT_EQ(EncodeDate(1, 1, 1), double(FirstDay));
  EXPECT_EQ(EncodeDate(9999, 12, 31), double(LastDay));
  EXPECT_EQ(DecodeDateTime(0).DayOfWeek, 6) << "1899-12-30 was a Saturday";
  EXPECT_EQ(DecodeDateTime(EncodeDate(2024, 2, 29)).DayOfWeek, 4);
}

// Every day from year 1 to 9999 decodes to the day after the one before,
// by a calendar counted here without the library's help, and encodes back.
TEST(DateTimeFunctionsTest, EveryDayOfTheCalendarFollowsTheOneBefore) {
  int Year = 1, Month = 1, Day = 1, Weekday = 1;  // 0001-01-01 was a Monday
  const int Lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int Number = FirstDay; Number <= LastDay; ++Number) {
    const TDateTimeParts Parts = DecodeDateTime(Number);
    if (Parts.Year != Year || Parts.Month != Month || Parts.Day != Day || Parts.DayOfWeek != Weekday) {
      ADD_FAILURE() << Number << " decodes to " << Parts.Year << "-" << Parts.Month << "-" << Parts.Day
                    << ", expected " << Year << "-" << Month << "-" << Day;
      return;
    }
    if ((Number - FirstDay) % 97 == 0) {
      ASSERT_EQ(EncodeDate(Year, Month, Day), double(Number));
    }
    Weekday = (Weekday + 1) % 7;
    if (++Day > Lengths[Month - 1] + (Month == 2 && IsLeap(Year))) {
      Day = 1;
      if (++Month > 12) {
        Month = 1;
        ++Year;
      }
    }
  }
}

TEST(DateTimeFunctionsTest, OnlyRealDatesEncode) {
  for (int Year : {1600, 2000, 2024, 4})
    EXPECT_NO_THROW(EncodeDate(Year, 2, 29)) << Year;
  for (int Year : {1700, 1800, 1900, 2100, 2023})
    EXPECT_EQ(FailureOf([&] { EncodeDate(Year, 2, 29); }), Format(SInvalidDate, Year, 2, 29));
  // A month or a day of 257 would pass as 1 if it were kept in a byte.
  const int Dates[][3] = {{2024, 0, 1},   {2024, 13, 1}, {2024, 257, 1}, {2024, 1, 0},  {2024, 1, 32},
                          {2024, 1, 257}, {2024, 4, 31}, {0, 1, 1},      {10000, 1, 1}, {-1, 1, 1}};
  for (const auto& D : Dates)
    EXPECT_NE(FailureOf([&] { EncodeDate(D[0], D[1], D[2]); }), u"(no failure)") << D[0] << "-" << D[1] << "-" << D[2];
  EXPECT_EQ(FailureOf([] { EncodeTime(24, 0, 0, 0); }), u"Invalid time: hour 24, minute 0, second 0, millisecond 0");
  const int Times[][4] = {{-1, 0, 0, 0}, {0, 60, 0, 0}, {0, 0, 60, 0}, {0, 0, 0, 1000}, {0, 0, 0, -1}};
  for (const auto& T : Times)
    EXPECT_NE(FailureOf([&] { EncodeTime(T[0], T[1], T[2], T[3]); }), u"(no failure)");
}

// Date plus time decodes to the same parts to the millisecond, at the ends
// of the range where a double holds the fewest digits of the fraction, and
// before the epoch, where the day is the floor of the number.
TEST(DateTimeFunctionsTest, DateAndTimeSurviveARoundTripToTheMillisecond) {
  for (int Number : {FirstDay, -36522, -1, 0, 1, 45351, LastDay}) {
    const TDateTimeParts Date = DecodeDateTime(Number);
    for (int Milliseconds = 0; Milliseconds < 86400000; Milliseconds += 997) {
      TDateTimeParts Expected = Date;
      Expected.Millisecond = Milliseconds % 1000;
      Expected.Second = Milliseconds / 1000 % 60;
      Expected.Minute = Milliseconds / 60000 % 60;
      Expected.Hour = Milliseconds / 3600000;
      const double Value = EncodeDate(Date.Year, Date.Month, Date.Day) +
                           EncodeTime(Expected.Hour, Expected.Minute, Expected.Second, Expected.Millisecond);
      ASSERT_EQ(Tied(DecodeDateTime(Value)), Tied(Expected)) << Number << " at " << Milliseconds;
    }
  }
  EXPECT_EQ(Tied(DecodeDateTime(EncodeDate(2024, 12, 31) + EncodeTime(23, 59, 59, 999))),
            std::make_tuple(2024, 12, 31, 23, 59, 59, 999));
}

TEST(DateTimeFunctionsTest, TimesBeforeTheEpochLieAfterTheirDay) {
  EXPECT_EQ(Tied(DecodeDateTime(-0.75)), std::make_tuple(1899, 12, 29, 6, 0, 0, 0));
  EXPECT_EQ(Tied(DecodeDateTime(-1.5)), std::make_tuple(1899, 12, 28, 12, 0, 0, 0));
  EXPECT_EQ(Tied(DecodeDateTime(-1.0 / 86400000)), std::make_tuple(1899, 12, 29, 23, 59, 59, 999));
}

TEST(DateTimeFunctionsTest, DecodingRoundsToTheNearestMillisecondAcrossMidnight) {
  const double Millisecond = 1.0 / 86400000;
  const double Day = EncodeDate(2023, 12, 31);
  EXPECT_EQ(Tied(DecodeDateTime(Day + 1 - 0.4 * Millisecond)), std::make_tuple(2024, 1, 1, 0, 0, 0, 0));
  EXPECT_EQ(Tied(DecodeDateTime(Day + 1 - 0.6 * Millisecond)), std::make_tuple(2023, 12, 31, 23, 59, 59, 999));
  EXPECT_EQ(Tied(DecodeDateTime(-0.4 * Millisecond)), std::make_tuple(1899, 12, 30, 0, 0, 0, 0));
}

TEST(DateTimeFunctionsTest, NumbersOutsideTheYearsOneTo9999DoNotDecode) {
  const double Millisecond = 1.0 / 86400000;
  EXPECT_NO_THROW(DecodeDateTime(LastDay + 1 - Millisecond));
  EXPECT_NO_THROW(DecodeDateTime(FirstDay - 0.4 * Millisecond)) << "rounds up to the first day";
  for (double Value : {double(LastDay + 1), LastDay + 1 - 0.4 * Millisecond, FirstDay - Millisecond, 1e300, -1e300,
                       std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
    EXPECT_NE(FailureOf([&] { DecodeDateTime(Value); }), u"(no failure)") << Value;
  EXPECT_EQ(FailureOf([] { DecodeDateTime(3e6); }),
            u"Date-time number out of range, the years run from 1 to 9999: 3000000");
  EXPECT_NE(FailureOf([] { DateTimeToText(-7e5, dttDate); }), u"(no failure)");
  EXPECT_NE(FailureOf([] { FormatDateTime(u"yyyy", 1e7); }), u"(no failure)");
}

TEST(DateTimeFunctionsTest, TextFormsShowMillisecondsOnlyWhenThereAreAny) {
  const double Value = EncodeDate(2024, 2, 9) + EncodeTime(7, 5, 3, 0);
  EXPECT_EQ(DateTimeToText(Value, dttDate), u"2024-02-09");
  EXPECT_EQ(DateTimeToText(Value, dttTime), u"07:05:03");
  EXPECT_EQ(DateTimeToText(Value, dttDateTime), u"2024-02-09 07:05:03");
  EXPECT_EQ(DateTimeToText(Value + EncodeTime(0, 0, 0, 7), dttDateTime), u"2024-02-09 07:05:03.007");
  EXPECT_EQ(DateTimeToText(EncodeDate(1, 1, 1), dttDateTime), u"0001-01-01 00:00:00");
  EXPECT_EQ(DateTimeToText(-0.75, dttDateTime), u"1899-12-29 06:00:00");
}

TEST(DateTimeFunctionsTest, TextReadsBackWhatIsWrittenAndItsVariants) {
  for (double Value : {0.0, -0.75, double(FirstDay), LastDay + EncodeTime(23, 59, 59, 999),
                       EncodeDate(2024, 2, 29) + EncodeTime(13, 45, 7, 250)}) {
    EXPECT_EQ(TextToDateTime(DateTimeToText(Value, dttDateTime), dttDateTime), Value);
    EXPECT_EQ(TextToDateTime(DateTimeToText(Value, dttDate), dttDate), std::floor(Value));
    const TDateTimeParts Parts = DecodeDateTime(Value);
    EXPECT_EQ(TextToDateTime(DateTimeToText(Value, dttTime), dttTime),
              EncodeTime(Parts.Hour, Parts.Minute, Parts.Second, Parts.Millisecond));
  }
  const double Date = EncodeDate(2024, 3, 5);
  EXPECT_EQ(TextToDateTime(u"  2024-3-5 ", dttDate), Date);
  EXPECT_EQ(TextToDateTime(u"2024-03-05", dttDateTime), Date);
  EXPECT_EQ(TextToDateTime(u"2024-03-05T09:30", dttDateTime), Date + EncodeTime(9, 30, 0, 0));
  EXPECT_EQ(TextToDateTime(u"2024-03-05   9:30:01.5", dttDateTime), Date + EncodeTime(9, 30, 1, 500));
  EXPECT_EQ(TextToDateTime(u"9:30:01.05", dttTime), EncodeTime(9, 30, 1, 50));
}

TEST(DateTimeFunctionsTest, TextThatIsNoDateOrTimeFailsWithItsForm) {
  EXPECT_EQ(FailureOf([] { TextToDateTime(u"2023-02-29", dttDate); }),
            u"Invalid date text, expected YYYY-MM-DD: \"2023-02-29\"");
  EXPECT_EQ(FailureOf([] { TextToDateTime(u"noon", dttTime); }), u"Invalid time text, expected HH:MM:SS: \"noon\"");
  EXPECT_EQ(FailureOf([] { TextToDateTime(u"2024-01-01 25:00", dttDateTime); }),
            u"Invalid date and time text, expected YYYY-MM-DD HH:MM:SS: \"2024-01-01 25:00\"");
  for (const char16_t* Text : {u"", u"2024", u"2024-01", u"2024/01/01", u"12024-01-01", u"2024-001-01",
                               u"2024-01-01x", u"2024-01-01 12:00"})
    EXPECT_NE(FailureOf([&] { TextToDateTime(Text, dttDate); }), u"(no failure)") << StringToUtf8(Text);
  for (const char16_t* Text : {u"12", u"12:", u"12:5x", u"12:60", u"12:00:60", u"12:00:00.", u"12:00:00.1234",
                               u"-1:00", u"2024-01-01"})
    EXPECT_NE(FailureOf([&] { TextToDateTime(Text, dttTime); }), u"(no failure)") << StringToUtf8(Text);
  for (const char16_t* Text : {u"2024-01-01T", u"2024-01-01 x", u"2024-01-0112:00", u"12:00"})
    EXPECT_NE(FailureOf([&] { TextToDateTime(Text, dttDateTime); }), u"(no failure)") << StringToUtf8(Text);
}

TEST(DateTimeFunctionsTest, PatternsWriteTheirLettersAndCopyTheRest) {
  const double Value = EncodeDate(2005, 3, 6) + EncodeTime(9, 4, 7, 45);
  EXPECT_EQ(FormatDateTime(u"yyyy-mm-dd hh:nn:ss.zzz", Value), u"2005-03-06 09:04:07.045");
  EXPECT_EQ(FormatDateTime(u"yy/m/d h:n:s z", Value), u"05/3/6 9:4:7 45");
  EXPECT_EQ(FormatDateTime(u"YYYY-MM-DD", Value), u"2005-03-06") << "letters in either case";
  EXPECT_EQ(FormatDateTime(u"ddd dddd mmm mmmm", Value), u"Sun Sunday Mar March");
  EXPECT_EQ(FormatDateTime(u"'today is' dddd, \"d\" d", Value), u"today is Sunday, d 6");
  EXPECT_EQ(FormatDateTime(u"hh 'o''clock' [T] %", Value), u"09 oclock [T] %");
  EXPECT_EQ(FormatDateTime(u"d 'unterminated dd", Value), u"6 unterminated dd");
  EXPECT_EQ(FormatDateTime(u"", Value), u"");
  EXPECT_EQ(FormatDateTime(u"yyyy", EncodeDate(33, 1, 1)), u"0033");
}

TEST(DateTimeFunctionsTest, TheClockFunctionsAgreeWithEachOther) {
  TInferenceEngine Engine;
  auto Number = [&](const char16_t* Call) { return Engine.ParseNExecuteFunCall(Call)->GetAsFloat(); };
  const double Date = Number(u"(system-date)");
  const double Time = Number(u"(system-time)");
  const double Now = Number(u"(system-datetime)");
  const double Seconds = Number(u"(time)");
  EXPECT_EQ(Date, std::floor(Date));
  EXPECT_GE(Time, 0.0);
  EXPECT_LT(Time, 1.0);
  EXPECT_GE(Seconds, 0.0);
  EXPECT_LT(Seconds, 86400.0);
  // Taken one after the other; midnight may fall between them.
  EXPECT_NEAR(Now, Date + Time, 1.0 / 1440) << "within a minute";
  EXPECT_NEAR(std::fmod(Seconds - Time * 86400 + 86400, 86400), 0.0, 60.0);
}

}  // namespace
}  // namespace tavo
