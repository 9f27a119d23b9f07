// Strings of the system: 16-bit code units inside, UTF-8 at the edges.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavo {

using String = std::u16string;
using StringView = std::u16string_view;

// Each ill-formed sequence becomes one U+FFFD; code points above U+FFFF
// become surrogate pairs.
// Decodes the UTF-8 sequence that Lead begins; Peek gives the next byte (or
// -1 at the end) and Take consumes it. The second byte's range rules out
// overlong forms, surrogates and code points above U+10FFFF; a byte that
// breaks a sequence is left for the next one. Gives the code point, or
// U+FFFD for a bad sequence.
template <class TPeek, class TTake>
uint32_t DecodeUtf8Sequence(uint8_t Lead, TPeek&& Peek, TTake&& Take) {
  constexpr uint32_t Replacement = 0xFFFD;
  if (Lead < 0x80) return Lead;
  int Need;
  uint32_t Code;
  int Low = 0x80, High = 0xBF;
  if (Lead >= 0xC2 && Lead <= 0xDF) {
    Need = 1;
    Code = Lead & 0x1F;
  } else if (Lead >= 0xE0 && Lead <= 0xEF) {
    Need = 2;
    Code = Lead & 0x0F;
    if (Lead == 0xE0) Low = 0xA0;
    if (Lead == 0xED) High = 0x9F;
  } else if (Lead >= 0xF0 && Lead <= 0xF4) {
    Need = 3;
    Code = Lead & 0x07;
    if (Lead == 0xF0) Low = 0x90;
    if (Lead == 0xF4) High = 0x8F;
  } else {
    return Replacement;
  }
  for (; Need > 0; --Need) {
    const int Byte = Peek();
    if (Byte < Low || Byte > High) return Replacement;
    Take();
    Code = (Code << 6) | uint32_t(Byte & 0x3F);
    Low = 0x80;
    High = 0xBF;
  }
  return Code;
}

String Utf8ToString(std::string_view Text);
// Lone surrogates become U+FFFD.
std::string StringToUtf8(StringView Text);

String IntToStr(int64_t Value);
// Upper-case hexadecimal, zero-padded to at least Digits digits.
String IntToHex(uint64_t Value, int Digits);

// Case mapping covers ASCII and the Latin-1 letters only.
// The upper case of one code unit: ASCII and Latin-1 letters; every case-blind
// comparison and hash folds through it.
char16_t UpCaseChar(char16_t C);
String UpperCase(StringView Text);
String LowerCase(StringView Text);
bool SameText(StringView A, StringView B);
// Both return <0, 0 or >0. CompareText folds case; CompareStr compares
// code units as they are.
int CompareText(StringView A, StringView B);
int CompareStr(StringView A, StringView B);

// Blanks are all code units up to U+0020.
String Trim(StringView Text);
String TrimLeft(StringView Text);
String TrimRight(StringView Text);

// Leading blanks, an optional sign, then decimal digits or hexadecimal
// digits after "$" or "0x". Hexadecimal gives the bit pattern, so
// "$FFFFFFFF" is -1. Value is left untouched on failure.
bool TryStrToInt(StringView Text, int32_t& Value);
bool TryStrToInt64(StringView Text, int64_t& Value);
// Always '.' as decimal separator, whatever the locale. A value too large
// for a double fails; one too small becomes zero.
bool TryStrToFloat(StringView Text, double& Value);

// Fast hash over the code units; a different seed gives a different hash
// for the same text.
int32_t CalculateHash(StringView Text, int32_t Seed);
inline int32_t CalculateHash(StringView Text) { return CalculateHash(Text, 0); }

bool FloatEquals(double A, double B, double Epsilon);

}  // namespace tavo

namespace tavo {

// One level of indentation in printed rule text.
inline constexpr char16_t IndentString[] = u"   ";

}  // namespace tavo
