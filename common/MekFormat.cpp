#include "MekFormat.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>

#include "MekExceptions.h"

namespace tavo {

namespace {

// Keeps a template such as "%999999999s" from asking for gigabytes.
constexpr int MaxFieldSize = 1 << 20;

// Room for rendered numbers; only very long precisions go to the heap.
class TCharBuffer {
 public:
  explicit TCharBuffer(size_t Capacity) {
    if (Capacity > sizeof(FSmall)) {
      FLarge = std::make_unique<char[]>(Capacity);
      FData = FLarge.get();
    }
    FEnd = FData + std::max(Capacity, sizeof(FSmall));
  }
  TCharBuffer(const TCharBuffer&) = delete;
  TCharBuffer& operator=(const TCharBuffer&) = delete;
  char* Data() { return FData; }
  char* End() { return FEnd; }

 private:
  char FSmall[400];
  std::unique_ptr<char[]> FLarge;
  char* FData = FSmall;
  char* FEnd = nullptr;
};

// True when the exact value of Abs has a 5 at the digit of weight 10^Position
// and nothing below it: the one case where rounding to the digit above is a
// tie, which to_chars breaks towards even.
bool IsDecimalTie(double Abs, int Position) {
  if (Abs == 0 || !std::isfinite(Abs)) return false;
  int Exponent;
  const double Fraction = std::frexp(Abs, &Exponent);
  uint64_t Mantissa = static_cast<uint64_t>(std::ldexp(Fraction, 53));
  Exponent -= 53;
  const int Zeros = std::countr_zero(Mantissa);
  Mantissa >>= Zeros;
  Exponent += Zeros;
  // Abs = Mantissa * 2^Exponent with an odd mantissa; such a value ends in a
  // 5 at 10^Position exactly when its power of two is 2^Position and, for
  // whole numbers, the mantissa also carries 5^(Position+1).
  if (Exponent != Position) return false;
  if (Position < 0) return true;
  uint64_t Power = 1;
  for (int I = 0; I <= Position; ++I) {
    if (Power > Mantissa / 5) return false;
    Power *= 5;
  }
  return Mantissa % Power == 0;
}

// Adds one unit in the last digit of [First, Last), skipping the point.
// Returns the carry out of the first digit.
bool IncrementDigits(char* First, char* Last) {
  while (Last != First) {
    --Last;
    if (*Last == '.') continue;
    if (*Last != '9') {
      ++*Last;
      return false;
    }
    *Last = '0';
  }
  return true;
}

// Abs in fixed notation with Decimals decimals; returns the end.
char* RenderFixed(double Abs, int Decimals, TCharBuffer& Buffer) {
  char* First = Buffer.Data();
  if (!IsDecimalTie(Abs, -(Decimals + 1))) {
    return std::to_chars(First, Buffer.End(), Abs, std::chars_format::fixed, Decimals).ptr;
  }
  // One more decimal is exact here and ends in the 5; drop it and round up.
  char* Last = std::to_chars(First, Buffer.End(), Abs, std::chars_format::fixed, Decimals + 1).ptr;
  --Last;
  if (Decimals == 0) --Last;
  if (IncrementDigits(First, Last)) {
    std::memmove(First + 1, First, static_cast<size_t>(Last - First));
    *First = '1';
    ++Last;
  }
  return Last;
}

// Reads "d.ddde+xx" as written by to_chars into its digits, moved to the
// front of the same text, and the decimal exponent.
void SplitScientific(char* First, char* Last, int& Exponent) {
  size_t Count = 0;
  char* P = First;
  for (; P != Last && *P != 'e'; ++P) {
    if (*P != '.') First[Count++] = *P;
  }
  std::from_chars(P + 1 + (P[1] == '+'), Last, Exponent);
}

// The first Significant digits of Abs, rounded, and the decimal exponent of
// the first one.
void RenderDigits(double Abs, int Significant, TCharBuffer& Buffer, int& Exponent) {
  char* First = Buffer.Data();
  char* Last =
      std::to_chars(First, Buffer.End(), Abs, std::chars_format::scientific, Significant - 1).ptr;
  SplitScientific(First, Last, Exponent);
  if (!IsDecimalTie(Abs, Exponent - Significant)) return;
  Last = std::to_chars(First, Buffer.End(), Abs, std::chars_format::scientific, Significant).ptr;
  SplitScientific(First, Last, Exponent);
  if (IncrementDigits(First, First + Significant)) {
    First[0] = '1';
    ++Exponent;
  }
}

char* PutExponent(char* Out, int Exponent) {
  *Out++ = 'E';
  *Out++ = Exponent < 0 ? '-' : '+';
  const unsigned Magnitude = static_cast<unsigned>(Exponent < 0 ? -Exponent : Exponent);
  if (Magnitude < 100) *Out++ = '0';
  if (Magnitude < 10) *Out++ = '0';
  return std::to_chars(Out, Out + 8, Magnitude).ptr;
}

// Digits d[0..Count) with exponent Exponent as d.dddE+xxx.
char* PutScientific(char* Out, const char* Digits, size_t Count, int Exponent) {
  *Out++ = Digits[0];
  if (Count > 1) {
    *Out++ = '.';
    Out = std::copy(Digits + 1, Digits + Count, Out);
  }
  return PutExponent(Out, Exponent);
}

// Shortest of fixed and scientific, without trailing zeros.
char* PutGeneral(char* Out, const char* Digits, int Significant, int Exponent) {
  size_t Count = static_cast<size_t>(Significant);
  while (Count > 1 && Digits[Count - 1] == '0') --Count;
  if (Exponent < -4 || Exponent >= Significant) return PutScientific(Out, Digits, Count, Exponent);
  if (Exponent < 0) {
    *Out++ = '0';
    *Out++ = '.';
    Out = std::fill_n(Out, -Exponent - 1, '0');
    return std::copy(Digits, Digits + Count, Out);
  }
  const size_t Whole = static_cast<size_t>(Exponent) + 1;
  if (Count <= Whole) {
    Out = std::copy(Digits, Digits + Count, Out);
    return std::fill_n(Out, Whole - Count, '0');
  }
  Out = std::copy(Digits, Digits + Whole, Out);
  *Out++ = '.';
  return std::copy(Digits + Whole, Digits + Count, Out);
}

char16_t LowerAscii(char16_t C) { return C >= u'A' && C <= u'Z' ? C + 0x20 : C; }

class TFormatter {
 public:
  TFormatter(StringView Template, const TFormatArg* Args, size_t Count)
      : FTemplate(Template), FArgs(Args), FCount(Count) {
    size_t Room = Template.size();
    for (size_t I = 0; I < Count; ++I) {
      Room += Args[I].Kind() == TFormatArg::akString ? Args[I].AsString().size() : 16;
    }
    FOut.reserve(Room);
  }

  String Run() {
    const size_t N = FTemplate.size();
    size_t Pos = 0;
    while (Pos < N) {
      const size_t Percent = FTemplate.find(u'%', Pos);
      if (Percent == StringView::npos) {
        FOut.append(FTemplate.substr(Pos));
        break;
      }
      FOut.append(FTemplate.substr(Pos, Percent - Pos));
      Pos = Directive(Percent + 1);
    }
    return std::move(FOut);
  }

 private:
  StringView FTemplate;
  const TFormatArg* FArgs;
  size_t FCount;
  size_t FNext = 0;
  String FOut;
  int FWidth = 0;
  bool FLeft = false;

  [[noreturn]] void Fail() const {
    String Message;
    Message.reserve(FTemplate.size() + 64);
    Message += u"Format \"";
    Message += FTemplate;
    Message += u"\" invalid or incompatible with argument";
    throw EMekException(std::move(Message));
  }

  const TFormatArg& NextArg() {
    if (FNext >= FCount) Fail();
    return FArgs[FNext++];
  }

  char16_t At(size_t Pos) const {
    if (Pos >= FTemplate.size()) Fail();
    return FTemplate[Pos];
  }

  // Digits at Pos, or -1 when there are none.
  int ReadNumber(size_t& Pos) const {
    int Value = -1;
    while (Pos < FTemplate.size() && FTemplate[Pos] >= u'0' && FTemplate[Pos] <= u'9') {
      Value = (Value < 0 ? 0 : Value) * 10 + (FTemplate[Pos++] - u'0');
      if (Value > MaxFieldSize) Fail();
    }
    return Value;
  }

  int StarArg() {
    const TFormatArg& Arg = NextArg();
    if (Arg.Kind() == TFormatArg::akInteger) {
      const int64_t Value = Arg.AsInteger();
      if (Value < -MaxFieldSize || Value > MaxFieldSize) Fail();
      return static_cast<int>(Value);
    }
    if (Arg.Kind() != TFormatArg::akUnsigned || Arg.AsUnsigned() > MaxFieldSize) Fail();
    return static_cast<int>(Arg.AsUnsigned());
  }

  // Parses one directive after its '%', writes it, and returns the position
  // after it.
  size_t Directive(size_t Pos) {
    if (At(Pos) == u'%') {
      FOut.push_back(u'%');
      return Pos + 1;
    }
    const size_t Start = Pos;
    const int Index = ReadNumber(Pos);
    if (Index >= 0 && At(Pos) == u':') {
      FNext = static_cast<size_t>(Index);
      ++Pos;
    } else {
      Pos = Start;
    }
    FLeft = false;
    if (At(Pos) == u'-') {
      FLeft = true;
      ++Pos;
    }
    if (At(Pos) == u'*') {
      ++Pos;
      FWidth = StarArg();
      if (FWidth < 0) {
        FLeft = true;
        FWidth = -FWidth;
      }
    } else {
      FWidth = ReadNumber(Pos);
    }
    int Precision = -1;
    if (At(Pos) == u'.') {
      ++Pos;
      if (At(Pos) == u'*') {
        ++Pos;
        Precision = StarArg();
      } else {
        Precision = ReadNumber(Pos);
        if (Precision < 0) Precision = 0;
      }
    }
    const char16_t Type = LowerAscii(At(Pos));
    switch (Type) {
      case u'd':
      case u'u':
      case u'x':
        PutInteger(Type, Precision);
        break;
      case u'e':
      case u'f':
      case u'g':
      case u'n':
      case u'm':
        PutFloat(Type, Precision);
        break;
      case u's':
        PutString(Precision);
        break;
      case u'p':
        PutPointer();
        break;
      default:
        Fail();
    }
    return Pos + 1;
  }

  void PadBefore(size_t Length) {
    if (!FLeft && FWidth > 0 && static_cast<size_t>(FWidth) > Length) FOut.append(FWidth - Length, u' ');
  }

  void PadAfter(size_t Length) {
    if (FLeft && FWidth > 0 && static_cast<size_t>(FWidth) > Length) FOut.append(FWidth - Length, u' ');
  }

  void AppendAscii(const char* First, const char* Last) {
    const size_t Old = FOut.size();
    FOut.resize(Old + static_cast<size_t>(Last - First));
    std::copy(First, Last, FOut.begin() + static_cast<ptrdiff_t>(Old));
  }

  void PutAscii(const char* First, const char* Last) {
    const size_t Length = static_cast<size_t>(Last - First);
    PadBefore(Length);
    AppendAscii(First, Last);
    PadAfter(Length);
  }

  void PutInteger(char16_t Type, int Precision) {
    const TFormatArg& Arg = NextArg();
    bool Negative = false;
    uint64_t Magnitude;
    if (Arg.Kind() == TFormatArg::akInteger) {
      const int64_t Value = Arg.AsInteger();
      if (Type == u'd') {
        Negative = Value < 0;
        Magnitude = Negative ? 0 - static_cast<uint64_t>(Value) : static_cast<uint64_t>(Value);
      } else if (Value < 0 && Value >= INT32_MIN) {
        // Most negative numbers come from 32-bit integers; show their pattern.
        Magnitude = static_cast<uint32_t>(Value);
      } else {
        Magnitude = static_cast<uint64_t>(Value);
      }
    } else if (Arg.Kind() == TFormatArg::akUnsigned) {
      Magnitude = Arg.AsUnsigned();
    } else {
      Fail();
    }
    char Digits[24];
    char* Last = std::to_chars(Digits, Digits + sizeof(Digits), Magnitude, Type == u'x' ? 16 : 10).ptr;
    if (Type == u'x') {
      for (char* P = Digits; P != Last; ++P) {
        if (*P >= 'a') *P = static_cast<char>(*P - 'a' + 'A');
      }
    }
    const size_t Count = static_cast<size_t>(Last - Digits);
    const size_t Zeros = Precision > 0 && static_cast<size_t>(Precision) > Count ? Precision - Count : 0;
    const size_t Length = Negative + Zeros + Count;
    PadBefore(Length);
    if (Negative) FOut.push_back(u'-');
    FOut.append(Zeros, u'0');
    AppendAscii(Digits, Last);
    PadAfter(Length);
  }

  void PutFloat(char16_t Type, int Precision) {
    const TFormatArg& Arg = NextArg();
    double Value;
    switch (Arg.Kind()) {
      case TFormatArg::akFloat:
        Value = Arg.AsFloat();
        break;
      case TFormatArg::akInteger:
        Value = static_cast<double>(Arg.AsInteger());
        break;
      case TFormatArg::akUnsigned:
        Value = static_cast<double>(Arg.AsUnsigned());
        break;
      default:
        Fail();
    }
    if (std::isnan(Value)) {
      static constexpr char Text[] = "NAN";
      return PutAscii(Text, Text + 3);
    }
    if (std::isinf(Value)) {
      static constexpr char Text[] = "-INF";
      return PutAscii(Text + (Value > 0), Text + 4);
    }
    bool Negative = std::signbit(Value);
    const double Abs = std::fabs(Value);

    // Fixed notation needs up to 309 whole digits.
    const int Decimals = Precision < 0 ? 2 : Precision;
    const int Significant = Precision < 0 ? 15 : std::max(Precision, 1);
    const bool Fixed = Type == u'f' || Type == u'n' || Type == u'm';
    TCharBuffer Body(Fixed ? static_cast<size_t>(Decimals) + 320 : static_cast<size_t>(Significant) + 16);
    char* First = Body.Data();
    char* Last;
    if (Fixed) {
      Last = RenderFixed(Abs, Decimals, Body);
    } else {
      TCharBuffer Digits(static_cast<size_t>(Significant) + 16);
      int Exponent;
      RenderDigits(Abs, Significant, Digits, Exponent);
      Last = Type == u'e' ? PutScientific(First, Digits.Data(), Significant, Exponent)
                          : PutGeneral(First, Digits.Data(), Significant, Exponent);
    }
    // No "-0.00": a value that shows as zero shows without a sign.
    if (Negative && std::find_if(First, Last, [](char C) { return C >= '1' && C <= '9'; }) == Last) {
      Negative = false;
    }

    if (Type == u'f' || Type == u'e' || Type == u'g') {
      const size_t Length = Negative + static_cast<size_t>(Last - First);
      PadBefore(Length);
      if (Negative) FOut.push_back(u'-');
      AppendAscii(First, Last);
      PadAfter(Length);
      return;
    }

    // Money puts its "$" after the minus sign: -$1,234.50.
    const bool Money = Type == u'm';
    const size_t Whole = static_cast<size_t>(std::find(First, Last, '.') - First);
    const size_t Separators = (Whole - 1) / 3;
    const size_t Length = Negative + Money + Separators + static_cast<size_t>(Last - First);
    PadBefore(Length);
    if (Negative) FOut.push_back(u'-');
    if (Money) FOut.push_back(u'$');
    for (size_t I = 0; I < Whole; ++I) {
      if (I > 0 && (Whole - I) % 3 == 0) FOut.push_back(u',');
      FOut.push_back(static_cast<char16_t>(First[I]));
    }
    AppendAscii(First + Whole, Last);
    PadAfter(Length);
  }

  void PutString(int Precision) {
    const TFormatArg& Arg = NextArg();
    if (Arg.Kind() != TFormatArg::akString) Fail();
    StringView Text = Arg.AsString();
    if (Precision >= 0 && Text.size() > static_cast<size_t>(Precision)) {
      size_t Cut = static_cast<size_t>(Precision);
      // Never leave half a surrogate pair.
      if (Cut > 0 && Text[Cut - 1] >= 0xD800 && Text[Cut - 1] <= 0xDBFF) --Cut;
      Text = Text.substr(0, Cut);
    }
    PadBefore(Text.size());
    FOut.append(Text);
    PadAfter(Text.size());
  }

  void PutPointer() {
    const TFormatArg& Arg = NextArg();
    if (Arg.Kind() != TFormatArg::akPointer) Fail();
    char Digits[16];
    const uint64_t Value = reinterpret_cast<uintptr_t>(Arg.AsPointer());
    for (int I = 15; I >= 0; --I) Digits[15 - I] = "0123456789ABCDEF"[(Value >> (I * 4)) & 0xF];
    PutAscii(Digits, Digits + 16);
  }
};

}  // namespace

String FormatArgs(StringView Template, const TFormatArg* Args, size_t Count) {
  return TFormatter(Template, Args, Count).Run();
}

void AppendFixed(String& Out, double Value, int Decimals) {
  if (std::isnan(Value)) {
    Out += u"NAN";
    return;
  }
  if (std::isinf(Value)) {
    Out += Value > 0 ? u"INF" : u"-INF";
    return;
  }
  TCharBuffer Body(static_cast<size_t>(Decimals) + 320);
  char* First = Body.Data();
  char* Last = RenderFixed(std::fabs(Value), Decimals, Body);
  // No "-0.00", as in Format.
  if (std::signbit(Value) && std::find_if(First, Last, [](char C) { return C >= '1' && C <= '9'; }) != Last)
    Out.push_back(u'-');
  for (const char* C = First; C != Last; ++C) Out.push_back(static_cast<char16_t>(*C));
}

}  // namespace tavo
