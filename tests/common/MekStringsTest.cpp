#include "common/MekStrings.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <limits>

namespace tavo {
namespace {

TEST(MekStrings, Utf8RoundTripsSupplementaryCharacters) {
  const std::string Utf8 = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z";  // a é € 😀 z
  const String Text = Utf8ToString(Utf8);
  EXPECT_EQ(Text, String(u"a\u00E9\u20AC\U0001F600z"));
  EXPECT_EQ(Text.size(), 6u);
  EXPECT_EQ(StringToUtf8(Text), Utf8);
  EXPECT_EQ(StringToUtf8(u"\U0010FFFF"), "\xF4\x8F\xBF\xBF");
  EXPECT_EQ(Utf8ToString(std::string("x\0y", 3)), String(u"x\0y", 3));
}

TEST(MekStrings, InvalidUtf8BecomesOneReplacementPerBadSequence) {
  EXPECT_EQ(Utf8ToString("a\xFF" "b"), u"a\uFFFDb");
  EXPECT_EQ(Utf8ToString("\x80"), u"\uFFFD");
  // Truncated: the byte that breaks the sequence is read again.
  EXPECT_EQ(Utf8ToString("\xE2\x82" "a"), u"\uFFFDa");
  EXPECT_EQ(Utf8ToString("\xF0\x9F\x98"), u"\uFFFD");
  // Overlong forms, an encoded surrogate and a code point beyond U+10FFFF.
  EXPECT_EQ(Utf8ToString("\xC0\xAF"), u"\uFFFD\uFFFD");
  EXPECT_EQ(Utf8ToString("\xE0\x80\xAF"), u"\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(Utf8ToString("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(Utf8ToString("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");
}

TEST(MekStrings, LoneSurrogatesEncodeAsReplacement) {
  EXPECT_EQ(StringToUtf8(u"\xD800x"), "\xEF\xBF\xBDx");
  EXPECT_EQ(StringToUtf8(String(1, char16_t(0xDC00))), "\xEF\xBF\xBD");
  EXPECT_EQ(StringToUtf8(u"\xDC00\xD800"), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(MekStrings, IntegersPrintInDecimalAndUpperHex) {
  EXPECT_EQ(IntToStr(0), u"0");
  EXPECT_EQ(IntToStr(std::numeric_limits<int64_t>::min()), u"-9223372036854775808");
  EXPECT_EQ(IntToHex(255, 4), u"00FF");
  EXPECT_EQ(IntToHex(0xABCDE, 2), u"ABCDE");
  EXPECT_EQ(IntToHex(0, 0), u"0");
  EXPECT_EQ(IntToHex(~uint64_t{0}, 0), u"FFFFFFFFFFFFFFFF");
}

TEST(MekStrings, CaseFoldingCoversAsciiAndLatin1Letters) {
  EXPECT_EQ(UpperCase(u"abz\u00E0\u00FE\u00F7\u00FF\u00DF1"), u"ABZ\u00C0\u00DE\u00F7\u00FF\u00DF1");
  EXPECT_EQ(LowerCase(u"ABZ\u00C0\u00DE\u00D7[@"), u"abz\u00E0\u00FE\u00D7[@");
  EXPECT_TRUE(SameText(u"Fact\u00C9", u"fACT\u00E9"));
  EXPECT_FALSE(SameText(u"\u00D7", u"\u00F7"));
  EXPECT_FALSE(SameText(u"abc", u"abcd"));
  EXPECT_EQ(CompareText(u"apple", u"APPLE"), 0);
  EXPECT_LT(CompareText(u"apple", u"Banana"), 0);
  EXPECT_GT(CompareText(u"abc", u"AB"), 0);
  EXPECT_GT(CompareStr(u"apple", u"Banana"), 0);
  EXPECT_LT(CompareStr(u"ab", u"abc"), 0);
  EXPECT_EQ(CompareStr(u"x", u"x"), 0);
}

TEST(MekStrings, TrimRemovesControlCharactersAndBlanks) {
  EXPECT_EQ(Trim(u" \t\r\n a b \x01"), u"a b");
  EXPECT_EQ(TrimLeft(u"  a "), u"a ");
  EXPECT_EQ(TrimRight(u"  a "), u"  a");
  EXPECT_EQ(Trim(u" \u00A0 "), u"\u00A0");
  EXPECT_EQ(Trim(u"   "), u"");
}

TEST(MekStrings, IntegerParsingAcceptsDecimalAndHexForms) {
  int32_t V = 0;
  EXPECT_TRUE(TryStrToInt(u"  -42", V));
  EXPECT_EQ(V, -42);
  EXPECT_TRUE(TryStrToInt(u"+007", V));
  EXPECT_EQ(V, 7);
  EXPECT_TRUE(TryStrToInt(u"$ff", V));
  EXPECT_EQ(V, 255);
  EXPECT_TRUE(TryStrToInt(u"0X1A", V));
  EXPECT_EQ(V, 26);
  EXPECT_TRUE(TryStrToInt(u"-$10", V));
  EXPECT_EQ(V, -16);
  EXPECT_TRUE(TryStrToInt(u"-0x10", V));
  EXPECT_EQ(V, -16);
  EXPECT_TRUE(TryStrToInt(u"$FFFFFFFF", V));
  EXPECT_EQ(V, -1);
  EXPECT_TRUE(TryStrToInt(u"$80000000", V));
  EXPECT_EQ(V, std::numeric_limits<int32_t>::min());
  EXPECT_TRUE(TryStrToInt(u"2147483647", V));
  EXPECT_EQ(V, 2147483647);
  EXPECT_TRUE(TryStrToInt(u"-2147483648", V));
  EXPECT_EQ(V, std::numeric_limits<int32_t>::min());

  int64_t W = 0;
  EXPECT_TRUE(TryStrToInt64(u"-9223372036854775808", W));
  EXPECT_EQ(W, std::numeric_limits<int64_t>::min());
  EXPECT_TRUE(TryStrToInt64(u"$FFFFFFFFFFFFFFFF", W));
  EXPECT_EQ(W, -1);
  EXPECT_TRUE(TryStrToInt64(u"$FFFFFFFF", W));
  EXPECT_EQ(W, 4294967295);
}

TEST(MekStrings, IntegerParsingRejectsMalformedOrOverflowingText) {
  int32_t V = 99;
  for (const char16_t* Bad : {u"", u"  ", u"-", u"+", u"$", u"0x", u"12a", u"12 ", u"1 2", u"$-1",
                              u"0x-1", u"+-1", u"2147483648", u"-2147483649", u"$100000000",
                              u"99999999999999999999", u"1.0", u"\uFF11"}) {
    EXPECT_FALSE(TryStrToInt(Bad, V)) << StringToUtf8(Bad);
  }
  EXPECT_EQ(V, 99);
  int64_t W = 0;
  EXPECT_FALSE(TryStrToInt64(u"9223372036854775808", W));
  EXPECT_FALSE(TryStrToInt64(u"$10000000000000000", W));
  EXPECT_TRUE(TryStrToInt64(u"2147483648", W));
}

TEST(MekStrings, FloatParsingUsesPointWhateverTheLocale) {
  // A locale with a decimal comma must not change the result.
  if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) std::setlocale(LC_ALL, "C");
  double V = 0;
  EXPECT_TRUE(TryStrToFloat(u"1.5", V));
  EXPECT_EQ(V, 1.5);
  std::setlocale(LC_ALL, "C");
  EXPECT_TRUE(TryStrToFloat(u" -.5", V));
  EXPECT_EQ(V, -0.5);
  EXPECT_TRUE(TryStrToFloat(u"+5.", V));
  EXPECT_EQ(V, 5.0);
  EXPECT_TRUE(TryStrToFloat(u"2.5E-3", V));
  EXPECT_EQ(V, 0.0025);
  EXPECT_TRUE(TryStrToFloat(u"1e+3", V));
  EXPECT_EQ(V, 1000.0);
  EXPECT_TRUE(TryStrToFloat(u"42", V));
  EXPECT_EQ(V, 42.0);
  EXPECT_TRUE(TryStrToFloat(u"0.1", V));
  EXPECT_EQ(V, 0.1);
  EXPECT_TRUE(TryStrToFloat(u"1e-400", V));
  EXPECT_EQ(V, 0.0);
  EXPECT_TRUE(TryStrToFloat(String(300, u'0') + u".25", V));
  EXPECT_EQ(V, 0.25);

  V = 7;
  for (const char16_t* Bad : {u"", u" ", u".", u"-", u"e5", u".e5", u"1e", u"1e+", u"1.5 ", u"1,5",
                              u"1..5", u"inf", u"nan", u"-infinity", u"0x10", u"1e400", u"1.5\uFF10"}) {
    EXPECT_FALSE(TryStrToFloat(Bad, V)) << StringToUtf8(Bad);
  }
  EXPECT_EQ(V, 7.0);
}

TEST(MekStrings, HashDependsOnTextAndSeed) {
  const String A = u"fact-name";
  EXPECT_EQ(CalculateHash(A), CalculateHash(String(u"fact-") + u"name"));
  EXPECT_EQ(CalculateHash(A), CalculateHash(A, 0));
  EXPECT_NE(CalculateHash(A, 1), CalculateHash(A, 2));
  EXPECT_NE(CalculateHash(u"ab"), CalculateHash(u"ba"));
  EXPECT_NE(CalculateHash(u""), CalculateHash(String(1, u'\0')));
  // Short identifiers spread over the low bits that tables use.
  int Buckets[16] = {};
  for (int I = 0; I < 1600; ++I) ++Buckets[CalculateHash(u"x" + IntToStr(I)) & 15];
  for (const int Count : Buckets) EXPECT_GT(Count, 50);
}

TEST(MekStrings, FloatEqualsWithinEpsilon) {
  EXPECT_TRUE(FloatEquals(1.0, 1.0 + 1e-10, 1e-9));
  EXPECT_FALSE(FloatEquals(1.0, 1.1, 1e-9));
  const double Inf = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(FloatEquals(Inf, Inf, 0));
  EXPECT_FALSE(FloatEquals(Inf, -Inf, 1e300));
  EXPECT_FALSE(FloatEquals(std::numeric_limits<double>::quiet_NaN(), 0, 1));
}

}  // namespace
}  // namespace tavo
