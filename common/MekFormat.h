// Message templates: Format(u"%s has %d facts", Name, Count).
//
// A directive is  % [index :] [-] [width] [. precision] type  and "%%"
// prints a percent sign. The index picks an argument (from 0) and later
// directives continue after it. Width and precision may be "*", taken from
// the next argument. Types, in either case:
//   d u x   integers; precision is the minimum number of digits
//   e g     floats; precision is the number of significant digits (15)
//   f n m   floats; precision is the number of decimals (2); n groups
//           thousands with ',' and m does the same after a "$"
//   p       pointer as 16 hexadecimal digits
//   s       string; precision is the maximum number of code units
// Floats print with '.' whatever the locale and round ties away from zero.
// A bad template or an argument of the wrong kind raises EMekException.
#pragma once

#include <cstddef>
#include <cstdint>

#include "MekStrings.h"

namespace tavo {

// One argument of Format. It only refers to string arguments, so it must
// not outlive the call.
class TFormatArg {
 public:
  enum TArgKind : uint8_t { akInteger, akUnsigned, akFloat, akString, akPointer };

  TFormatArg(int Value) : FKind(akInteger), FInteger(Value) {}
  TFormatArg(long Value) : FKind(akInteger), FInteger(Value) {}
  TFormatArg(long long Value) : FKind(akInteger), FInteger(Value) {}
  TFormatArg(unsigned Value) : FKind(akUnsigned), FUnsigned(Value) {}
  TFormatArg(unsigned long Value) : FKind(akUnsigned), FUnsigned(Value) {}
  TFormatArg(unsigned long long Value) : FKind(akUnsigned), FUnsigned(Value) {}
  TFormatArg(double Value) : FKind(akFloat), FFloat(Value) {}
  TFormatArg(float Value) : FKind(akFloat), FFloat(Value) {}
  TFormatArg(const String& Value) : TFormatArg(StringView(Value)) {}
  TFormatArg(StringView Value) : FKind(akString), FText{Value.data(), Value.size()} {}
  TFormatArg(const char16_t* Value) : TFormatArg(Value ? StringView(Value) : StringView()) {}
  TFormatArg(const void* Value) : FKind(akPointer), FPointer(Value) {}
  // A bool is almost always a mistake in a message, and narrow text would
  // otherwise print as a pointer.
  TFormatArg(bool) = delete;
  TFormatArg(const char*) = delete;

  TArgKind Kind() const { return FKind; }
  int64_t AsInteger() const { return FInteger; }
  uint64_t AsUnsigned() const { return FUnsigned; }
  double AsFloat() const { return FFloat; }
  StringView AsString() const { return StringView(FText.Data, FText.Size); }
  const void* AsPointer() const { return FPointer; }

 private:
  TArgKind FKind;
  union {
    int64_t FInteger;
    uint64_t FUnsigned;
    double FFloat;
    const void* FPointer;
    struct {
      const char16_t* Data;
      size_t Size;
    } FText;
  };
};

String FormatArgs(StringView Template, const TFormatArg* Args, size_t Count);

template <class... A>
String Format(StringView Template, const A&... Args) {
  if constexpr (sizeof...(A) == 0) {
    return FormatArgs(Template, nullptr, 0);
  } else {
    const TFormatArg List[] = {TFormatArg(Args)...};
    return FormatArgs(Template, List, sizeof...(A));
  }
}

// Appends Value as Format's "%.<Decimals>f" writes it, without the
// temporary text.
void AppendFixed(String& Out, double Value, int Decimals);

}  // namespace tavo
