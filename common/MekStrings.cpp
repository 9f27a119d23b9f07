#include "MekStrings.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

namespace tavo {

namespace {

constexpr char16_t ReplacementChar = 0xFFFD;

bool IsHighSurrogate(char16_t C) { return C >= 0xD800 && C <= 0xDBFF; }
bool IsLowSurrogate(char16_t C) { return C >= 0xDC00 && C <= 0xDFFF; }
bool IsBlank(char16_t C) { return C <= 0x20; }
bool IsDigit(char16_t C) { return C >= u'0' && C <= u'9'; }

char16_t FoldLower(char16_t C) {
  if (C >= u'A' && C <= u'Z') return C + 0x20;
  if (C >= 0xC0 && C <= 0xDE && C != 0xD7) return C + 0x20;
  return C;
}

int HexValue(char16_t C) {
  if (C >= u'0' && C <= u'9') return C - u'0';
  if (C >= u'A' && C <= u'F') return C - u'A' + 10;
  if (C >= u'a' && C <= u'f') return C - u'a' + 10;
  return -1;
}

// Parses into the Bits-wide two's complement range; hexadecimal is taken
// as the bit pattern.
bool ParseInteger(StringView Text, int Bits, int64_t& Value) {
  size_t I = 0;
  const size_t N = Text.size();
  while (I < N && IsBlank(Text[I])) ++I;
  bool Negative = false;
  if (I < N && (Text[I] == u'+' || Text[I] == u'-')) {
    Negative = Text[I] == u'-';
    ++I;
  }
  const uint64_t Mask = Bits == 64 ? ~uint64_t{0} : (uint64_t{1} << Bits) - 1;
  uint64_t Magnitude = 0;
  bool Hex = false;
  if (I < N && Text[I] == u'$') {
    Hex = true;
    ++I;
  } else if (I + 1 < N && Text[I] == u'0' && (Text[I + 1] == u'x' || Text[I + 1] == u'X')) {
    Hex = true;
    I += 2;
  }
  if (I == N) return false;
  if (Hex) {
    for (; I < N; ++I) {
      const int D = HexValue(Text[I]);
      if (D < 0 || (Magnitude >> (Bits - 4)) != 0) return false;
      Magnitude = (Magnitude << 4) | static_cast<uint64_t>(D);
    }
    if (Negative) Magnitude = (0 - Magnitude) & Mask;
    // Sign-extend the pattern to 64 bits.
    if (Bits < 64 && (Magnitude >> (Bits - 1)) != 0) Magnitude |= ~Mask;
    Value = static_cast<int64_t>(Magnitude);
    return true;
  }
  const uint64_t Limit = (uint64_t{1} << (Bits - 1)) - (Negative ? 0 : 1);
  for (; I < N; ++I) {
    if (!IsDigit(Text[I])) return false;
    const uint64_t D = Text[I] - u'0';
    if (Magnitude > (Limit - D) / 10) return false;
    Magnitude = Magnitude * 10 + D;
  }
  Value = Negative ? static_cast<int64_t>(0 - Magnitude) : static_cast<int64_t>(Magnitude);
  return true;
}

}  // namespace

String Utf8ToString(std::string_view Text) {
  String Out;
  Out.reserve(Text.size());
  const size_t N = Text.size();
  size_t I = 0;
  auto Peek = [&] { return I < N ? int(static_cast<uint8_t>(Text[I])) : -1; };
  auto Take = [&] { ++I; };
  while (I < N) {
    const uint8_t Lead = static_cast<uint8_t>(Text[I++]);
    uint32_t Code = DecodeUtf8Sequence(Lead, Peek, Take);
    if (Code >= 0x10000) {
      Code -= 0x10000;
      Out.push_back(static_cast<char16_t>(0xD800 + (Code >> 10)));
      Out.push_back(static_cast<char16_t>(0xDC00 + (Code & 0x3FF)));
    } else {
      Out.push_back(static_cast<char16_t>(Code));
    }
  }
  return Out;
}

std::string StringToUtf8(StringView Text) {
  const size_t N = Text.size();
  size_t Length = 0;
  for (size_t I = 0; I < N; ++I) {
    const char16_t C = Text[I];
    if (C < 0x80) {
      Length += 1;
    } else if (C < 0x800) {
      Length += 2;
    } else if (IsHighSurrogate(C) && I + 1 < N && IsLowSurrogate(Text[I + 1])) {
      Length += 4;
      ++I;
    } else {
      Length += 3;
    }
  }
  std::string Out;
  Out.reserve(Length);
  for (size_t I = 0; I < N; ++I) {
    uint32_t C = Text[I];
    if (C < 0x80) {
      Out.push_back(static_cast<char>(C));
      continue;
    }
    if (C < 0x800) {
      Out.push_back(static_cast<char>(0xC0 | (C >> 6)));
      Out.push_back(static_cast<char>(0x80 | (C & 0x3F)));
      continue;
    }
    if (IsHighSurrogate(C) && I + 1 < N && IsLowSurrogate(Text[I + 1])) {
      C = 0x10000 + ((C - 0xD800) << 10) + (Text[++I] - 0xDC00);
      Out.push_back(static_cast<char>(0xF0 | (C >> 18)));
      Out.push_back(static_cast<char>(0x80 | ((C >> 12) & 0x3F)));
      Out.push_back(static_cast<char>(0x80 | ((C >> 6) & 0x3F)));
      Out.push_back(static_cast<char>(0x80 | (C & 0x3F)));
      continue;
    }
    if (IsHighSurrogate(C) || IsLowSurrogate(C)) C = ReplacementChar;
    Out.push_back(static_cast<char>(0xE0 | (C >> 12)));
    Out.push_back(static_cast<char>(0x80 | ((C >> 6) & 0x3F)));
    Out.push_back(static_cast<char>(0x80 | (C & 0x3F)));
  }
  return Out;
}

String IntToStr(int64_t Value) {
  char Buffer[24];
  const auto Result = std::to_chars(Buffer, Buffer + sizeof(Buffer), Value);
  return String(Buffer, Result.ptr);
}

String IntToHex(uint64_t Value, int Digits) {
  char Buffer[16];
  const auto Result = std::to_chars(Buffer, Buffer + sizeof(Buffer), Value, 16);
  const size_t Length = static_cast<size_t>(Result.ptr - Buffer);
  const size_t Zeros = Digits > 0 && static_cast<size_t>(Digits) > Length ? Digits - Length : 0;
  String Out(Zeros, u'0');
  Out.reserve(Zeros + Length);
  for (size_t I = 0; I < Length; ++I) {
    const char C = Buffer[I];
    Out.push_back(static_cast<char16_t>(C >= 'a' ? C - 'a' + 'A' : C));
  }
  return Out;
}

char16_t UpCaseChar(char16_t C) {
  if (C >= u'a' && C <= u'z') return C - 0x20;
  if (C >= 0xE0 && C <= 0xFE && C != 0xF7) return C - 0x20;
  return C;
}

String UpperCase(StringView Text) {
  String Out(Text);
  for (char16_t& C : Out) C = UpCaseChar(C);
  return Out;
}

String LowerCase(StringView Text) {
  String Out(Text);
  for (char16_t& C : Out) C = FoldLower(C);
  return Out;
}

bool SameText(StringView A, StringView B) {
  if (A.size() != B.size()) return false;
  for (size_t I = 0; I < A.size(); ++I) {
    if (A[I] != B[I] && UpCaseChar(A[I]) != UpCaseChar(B[I])) return false;
  }
  return true;
}

int CompareText(StringView A, StringView B) {
  const size_t N = std::min(A.size(), B.size());
  for (size_t I = 0; I < N; ++I) {
    const char16_t X = UpCaseChar(A[I]), Y = UpCaseChar(B[I]);
    if (X != Y) return X < Y ? -1 : 1;
  }
  return A.size() == B.size() ? 0 : (A.size() < B.size() ? -1 : 1);
}

int CompareStr(StringView A, StringView B) {
  const int R = A.compare(B);
  return R < 0 ? -1 : (R > 0 ? 1 : 0);
}

String Trim(StringView Text) { return TrimRight(TrimLeft(Text)); }

String TrimLeft(StringView Text) {
  size_t I = 0;
  while (I < Text.size() && IsBlank(Text[I])) ++I;
  return String(Text.substr(I));
}

String TrimRight(StringView Text) {
  size_t N = Text.size();
  while (N > 0 && IsBlank(Text[N - 1])) --N;
  return String(Text.substr(0, N));
}

bool TryStrToInt(StringView Text, int32_t& Value) {
  int64_t Wide;
  if (!ParseInteger(Text, 32, Wide)) return false;
  Value = static_cast<int32_t>(Wide);
  return true;
}

bool TryStrToInt64(StringView Text, int64_t& Value) { return ParseInteger(Text, 64, Value); }

bool TryStrToFloat(StringView Text, double& Value) {
  size_t I = 0;
  const size_t N = Text.size();
  while (I < N && IsBlank(Text[I])) ++I;
  bool Negative = false;
  if (I < N && (Text[I] == u'+' || Text[I] == u'-')) {
    Negative = Text[I] == u'-';
    ++I;
  }
  // Checked here rather than by from_chars, which would also take words
  // such as "inf" and stop early on trailing text.
  const size_t Start = I;
  size_t Digits = 0;
  // Decimal position of the leading nonzero digit, to tell underflow from
  // overflow when the value is out of range.
  int64_t Magnitude = 0;
  bool SeenNonZero = false, SeenPoint = false;
  for (; I < N; ++I) {
    const char16_t C = Text[I];
    if (IsDigit(C)) {
      ++Digits;
      if (!SeenNonZero && C != u'0') SeenNonZero = true;
      if (SeenNonZero && !SeenPoint) ++Magnitude;
      if (!SeenNonZero && SeenPoint) --Magnitude;
    } else if (C == u'.' && !SeenPoint) {
      SeenPoint = true;
    } else {
      break;
    }
  }
  if (Digits == 0) return false;
  if (I < N && (Text[I] == u'e' || Text[I] == u'E')) {
    ++I;
    bool NegativeExponent = false;
    if (I < N && (Text[I] == u'+' || Text[I] == u'-')) {
      NegativeExponent = Text[I] == u'-';
      ++I;
    }
    int64_t Exponent = 0;
    const size_t ExponentStart = I;
    for (; I < N && IsDigit(Text[I]); ++I) {
      Exponent = std::min<int64_t>(Exponent * 10 + (Text[I] - u'0'), int64_t{1} << 40);
    }
    if (I == ExponentStart) return false;
    Magnitude += NegativeExponent ? -Exponent : Exponent;
  }
  if (I != N) return false;

  const size_t Length = N - Start;
  char Small[128];
  std::unique_ptr<char[]> Large;
  char* Buffer = Small;
  if (Length > sizeof(Small)) {
    Large = std::make_unique<char[]>(Length);
    Buffer = Large.get();
  }
  for (size_t K = 0; K < Length; ++K) Buffer[K] = static_cast<char>(Text[Start + K]);
  double Result = 0;
  const auto Parsed = std::from_chars(Buffer, Buffer + Length, Result);
  if (Parsed.ec == std::errc::result_out_of_range) {
    if (Magnitude > 0) return false;
    Result = 0;
  } else if (Parsed.ec != std::errc() || Parsed.ptr != Buffer + Length) {
    return false;
  }
  Value = Negative ? -Result : Result;
  return true;
}

namespace {

// The high and low halves of the full product, folded.
inline uint64_t MultiplyFold(uint64_t A, uint64_t B) {
  const unsigned __int128 R = static_cast<unsigned __int128>(A) * B;
  return static_cast<uint64_t>(R) ^ static_cast<uint64_t>(R >> 64);
}

// Four code units as one word, in the machine's byte order.
inline uint64_t LoadUnits(const char16_t* P) {
  uint64_t Word;
  std::memcpy(&Word, P, sizeof(Word));
  return Word;
}

}  // namespace

int32_t CalculateHash(StringView Text, int32_t Seed) {
  // Eight code units per multiplication, the last ones read by overlapping
  // loads, so that keys of identifier length take two or three steps.
  constexpr uint64_t K0 = 0xA0761D6478BD642Full, K1 = 0xE7037ED1A0B428DBull,
                     K2 = 0x8EBC6AF09C88C6E3ull;
  const char16_t* P = Text.data();
  size_t N = Text.size();
  uint64_t H = K0 ^ (N * K2);
  uint64_t A, B;
  if (N <= 8) {
    if (N >= 4) {
      A = LoadUnits(P);
      B = LoadUnits(P + N - 4);
    } else {
      A = N == 0 ? 0 : (uint64_t{P[0]} << 32) | (uint64_t{P[N >> 1]} << 16) | P[N - 1];
      B = 0;
    }
  } else {
    for (; N > 8; N -= 8, P += 8) H = MultiplyFold(LoadUnits(P) ^ K1, LoadUnits(P + 4) ^ H);
    A = LoadUnits(P + N - 8);
    B = LoadUnits(P + N - 4);
  }
  H = MultiplyFold(A ^ K1, B ^ H);
  // The seed enters last, through steps that are each a bijection, so that
  // different seeds never give the same hash for the same text.
  uint32_t X = static_cast<uint32_t>(H ^ (H >> 32)) ^ static_cast<uint32_t>(Seed);
  X *= 0x9E3779B1u;
  X ^= X >> 16;
  return static_cast<int32_t>(X);
}

bool FloatEquals(double A, double B, double Epsilon) {
  // Equal infinities compare equal although their difference is NaN.
  return A == B || std::fabs(A - B) <= Epsilon;
}

}  // namespace tavo
