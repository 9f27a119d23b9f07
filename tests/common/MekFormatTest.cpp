#include "common/MekFormat.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <limits>

#include "common/MekExceptions.h"

namespace tavo {
namespace {

TEST(MekFormat, FloatsRoundHalfAwayOnDecimalText) {
  EXPECT_EQ(Format(u"%.4f", 0.12345), u"0.1235");
  EXPECT_EQ(Format(u"%.0f", 2.5), u"3");
  EXPECT_EQ(Format(u"%.0f", 0.5), u"1");
  EXPECT_EQ(Format(u"%.0f", -2.5), u"-3");
  EXPECT_EQ(Format(u"%.2f", 0.125), u"0.13");
  EXPECT_EQ(Format(u"%.0f", 99.5), u"100");
  EXPECT_EQ(Format(u"%.1f", 9.75), u"9.8");
  // Stored just below the half: follows the binary value.
  EXPECT_EQ(Format(u"%.3f", 1.0005), u"1.000");
  EXPECT_EQ(Format(u"%.4e", 12345.0), u"1.235E+004");
  EXPECT_EQ(Format(u"%.1e", 9.5), u"1E+001");
  EXPECT_EQ(Format(u"%.2g", 0.125), u"0.13");
  EXPECT_EQ(Format(u"%.2g", 2.5e-7), u"2.5E-007");
}

TEST(MekFormat, FixedNotationSignsAndSpecialValues) {
  EXPECT_EQ(Format(u"%.4f", 1), u"1.0000");
  EXPECT_EQ(Format(u"%f", 3.14159), u"3.14");
  EXPECT_EQ(Format(u"%.4f", -0.0), u"0.0000");
  EXPECT_EQ(Format(u"%.2f", -0.0001), u"0.00");
  EXPECT_EQ(Format(u"%.2f", -0.01), u"-0.01");
  EXPECT_EQ(Format(u"%.0f", 1e20), u"100000000000000000000");
  EXPECT_EQ(Format(u"%.3f", 2.0f), u"2.000");
  EXPECT_EQ(Format(u"%.30f", 1e-30), u"0.000000000000000000000000000001");
  const double Inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(Format(u"%f|%e|%g", Inf, -Inf, std::numeric_limits<double>::quiet_NaN()), u"INF|-INF|NAN");
  EXPECT_EQ(Format(u"[%5m]", -Inf), u"[ -INF]");
  EXPECT_EQ(Format(u"%.400f", 1.0).size(), 402u);
  EXPECT_EQ(Format(u"%.0f", std::numeric_limits<double>::max()).size(), 309u);
}

TEST(MekFormat, ScientificAndGeneralForms) {
  EXPECT_EQ(Format(u"%e", 1.0), u"1.00000000000000E+000");
  EXPECT_EQ(Format(u"%E", 0.0), u"0.00000000000000E+000");
  EXPECT_EQ(Format(u"%.3e", -1.5e-300), u"-1.50E-300");
  EXPECT_EQ(Format(u"%.2e", 4.9e-324), u"4.9E-324");
  EXPECT_EQ(Format(u"%g", 0.5), u"0.5");
  EXPECT_EQ(Format(u"%g", 100.0), u"100");
  EXPECT_EQ(Format(u"%g", 1e20), u"1E+020");
  EXPECT_EQ(Format(u"%g", 1e15), u"1E+015");
  EXPECT_EQ(Format(u"%g", 123456789012345.0), u"123456789012345");
  EXPECT_EQ(Format(u"%g", 0.0001), u"0.0001");
  EXPECT_EQ(Format(u"%g", 0.00001), u"1E-005");
  EXPECT_EQ(Format(u"%g", 1.0 / 3), u"0.333333333333333");
  EXPECT_EQ(Format(u"%g", -0.0), u"0");
  EXPECT_EQ(Format(u"%g", 0.1), u"0.1");
  EXPECT_EQ(Format(u"%.3g", 1234.5), u"1.23E+003");
  EXPECT_EQ(Format(u"%.0g", 7.0), u"7");
  EXPECT_EQ(Format(u"%g", 7), u"7");
}

TEST(MekFormat, ThousandsAndMoney) {
  EXPECT_EQ(Format(u"%n", 1234567.891), u"1,234,567.89");
  EXPECT_EQ(Format(u"%n", 999.999), u"1,000.00");
  EXPECT_EQ(Format(u"%.0n", 123456), u"123,456");
  EXPECT_EQ(Format(u"%n", -12.0), u"-12.00");
  EXPECT_EQ(Format(u"%m", -1234.5), u"-$1,234.50");
  EXPECT_EQ(Format(u"%m", 0.5), u"$0.50");
  EXPECT_EQ(Format(u"%.1m", 1000000u), u"$1,000,000.0");
  EXPECT_EQ(Format(u"[%12m]", 1234.5), u"[   $1,234.50]");
}

TEST(MekFormat, IntegersWithPrecisionWidthAndPatterns) {
  EXPECT_EQ(Format(u"%d", -5), u"-5");
  EXPECT_EQ(Format(u"%.3d", -5), u"-005");
  EXPECT_EQ(Format(u"[%6.3d]", -5), u"[  -005]");
  EXPECT_EQ(Format(u"[%-5d]", 42), u"[42   ]");
  EXPECT_EQ(Format(u"[%1d]", 12345), u"[12345]");
  EXPECT_EQ(Format(u"%D", std::numeric_limits<int64_t>::min()), u"-9223372036854775808");
  EXPECT_EQ(Format(u"%u", -1), u"4294967295");
  EXPECT_EQ(Format(u"%u", int64_t{-5000000000}), u"18446744068709551616");
  EXPECT_EQ(Format(u"%u", std::numeric_limits<uint64_t>::max()), u"18446744073709551615");
  EXPECT_EQ(Format(u"%.4u", 7u), u"0007");
  EXPECT_EQ(Format(u"%x", 255), u"FF");
  EXPECT_EQ(Format(u"%.4X", 255), u"00FF");
  EXPECT_EQ(Format(u"%x", -1), u"FFFFFFFF");
  EXPECT_EQ(Format(u"%x", int64_t{-1} << 40), u"FFFFFF0000000000");
  EXPECT_EQ(Format(u"%d", 'A'), u"65");
}

TEST(MekFormat, StringsIndexesAndStarArguments) {
  const String Name = u"Tavo";
  EXPECT_EQ(Format(u"Hi %s!", Name), u"Hi Tavo!");
  EXPECT_EQ(Format(u"%.2s|%.0s|%.9s", Name, Name, Name), u"Ta||Tavo");
  EXPECT_EQ(Format(u"[%6s][%-6s][%2s]", Name, StringView(Name), u"abc"), u"[  Tavo][Tavo  ][abc]");
  EXPECT_EQ(Format(u"%.1s", u"\U0001F600x"), u"");
  EXPECT_EQ(Format(u"%s", static_cast<const char16_t*>(nullptr)), u"");
  EXPECT_EQ(Format(u"100%% \u00E9"), u"100% \u00E9");
  EXPECT_EQ(Format(u"%1:s %0:s", u"a", u"b"), u"b a");
  EXPECT_EQ(Format(u"%1:s %s %0:s %s", u"a", u"b", u"c"), u"b c a b");
  EXPECT_EQ(Format(u"[%*d]", 4, 7), u"[   7]");
  EXPECT_EQ(Format(u"[%-*s]", 3, u"x"), u"[x  ]");
  EXPECT_EQ(Format(u"[%*s]", -3, u"x"), u"[x  ]");
  EXPECT_EQ(Format(u"%.*f", 1, 2.25), u"2.3");
  EXPECT_EQ(Format(u"%*.*f", 6u, 2, 1.0), u"  1.00");
  EXPECT_EQ(Format(u"%s and %s", u"unused", u"args", 3), u"unused and args");
}

TEST(MekFormat, PointersPrintSixteenHexDigits) {
  EXPECT_EQ(Format(u"%p", static_cast<const void*>(nullptr)), u"0000000000000000");
  const void* P = reinterpret_cast<const void*>(uintptr_t{0xABCDEF12});
  EXPECT_EQ(Format(u"[%18p]", P), u"[  00000000ABCDEF12]");
}

TEST(MekFormat, FloatsUsePointWhateverTheLocale) {
  if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) std::setlocale(LC_ALL, "C");
  EXPECT_EQ(Format(u"%.1f %g %e %n", 1.5, 2.5, 3.0, 1234.5),
            u"1.5 2.5 3.00000000000000E+000 1,234.50");
  std::setlocale(LC_ALL, "C");
}

TEST(MekFormat, BadTemplatesAndArgumentsRaiseWithMessage) {
  try {
    Format(u"x %k", 1);
    FAIL() << "no exception";
  } catch (const EMekException& E) {
    EXPECT_EQ(E.Message(), u"Format \"x %k\" invalid or incompatible with argument");
    EXPECT_STREQ(E.what(), "Format \"x %k\" invalid or incompatible with argument");
  }
  EXPECT_THROW(Format(u"%d %d", 1), EMekException);
  EXPECT_THROW(Format(u"%2:d", 1, 2), EMekException);
  EXPECT_THROW(Format(u"%d", 1.5), EMekException);
  EXPECT_THROW(Format(u"%x", 1.5f), EMekException);
  EXPECT_THROW(Format(u"%s", 1), EMekException);
  EXPECT_THROW(Format(u"%f", u"1.5"), EMekException);
  EXPECT_THROW(Format(u"%p", 1), EMekException);
  EXPECT_THROW(Format(u"%*d", 1.0, 2), EMekException);
  EXPECT_THROW(Format(u"%.*s", u"2", u"ab"), EMekException);
  EXPECT_THROW(Format(u"50%"), EMekException);
  EXPECT_THROW(Format(u"%-5.2", 1.0), EMekException);
  EXPECT_THROW(Format(u"%1:", 1, 2), EMekException);
  EXPECT_THROW(Format(u"%999999999s", u""), EMekException);
}

}  // namespace
}  // namespace tavo
