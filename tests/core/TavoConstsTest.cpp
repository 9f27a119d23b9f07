#include "core/TavoConsts.h"

#include <gtest/gtest.h>

#include "core/TavoHelperFunctions.h"

namespace tavo {
namespace {

TEST(TavoConstsTest, TypeSetsPrintTheirMembersWithoutPrefix) {
  EXPECT_EQ(SetToString(TavoNumericTypes), u"Integer, Float");
  EXPECT_EQ(SetToString(TavoNumericTypes, u",", true), u"[Integer,Float]");
  EXPECT_EQ(SetToString(TavoFactTypes, u" ", false), u"Integer FactId Float");
  EXPECT_EQ(SetToString(TTavoTypes(), u",", true), u"[]");
  EXPECT_EQ(GetTavoTypeName(dtExternalAddress), u"dtExternalAddress");
  // Memberships that look odd but are meant.
  EXPECT_TRUE(TavoIntegerTypes.Contains(dtDescriptor));
  EXPECT_FALSE(TavoSlotTypes.Contains(dtList));
  EXPECT_TRUE(TavoSlotTypesWithFuzzy.Contains(dtFuzzy));
  EXPECT_EQ(TavoAllWatches.Count(), 6);
}

TEST(TavoConstsTest, QuotesComeOffOnlyInPairs) {
  EXPECT_EQ(TavoStringToString(u"\"abc\""), u"abc");
  EXPECT_EQ(TavoStringToString(u"\"abc"), u"\"abc");
  EXPECT_EQ(TavoStringToString(u"\""), u"\"");
  EXPECT_EQ(TavoStringToString(u"\"\""), u"");
}

TEST(TavoConstsTest, ConstructNamesRejectTheFirstReservedCharacter) {
  EXPECT_NO_THROW(CheckConstructName(u"good-name_1"));
  try {
    CheckConstructName(u"a(b c");
    FAIL();
  } catch (const ETavoException& E) {
    EXPECT_EQ(E.Message(), u"\"a(b c\" contains unexpected character: \"(\"");
  }
  EXPECT_THROW(CheckConstructName(u"x<y"), ETavoException);
  EXPECT_THROW(CheckConstructName(u"it's"), ETavoException);
}

}  // namespace
}  // namespace tavo
