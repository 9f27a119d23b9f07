#include "packages/StringPackage.h"

#include <gtest/gtest.h>

#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

String Typed(const ITavoValue& V) { return GetTavoTypeName(V->GetDType()) + u" " + V->ToString(); }

String Formatted(const char16_t* Control, std::initializer_list<ITavoValue> Items) {
  IValueVector Vector = Make<TValueVector>();
  for (const ITavoValue& Item : Items) Vector->Add(Item);
  return CLIPSFormat(Control, Vector);
}

class StringPackageTest : public ::testing::Test {
 protected:
  StringPackageTest() { NewComponent<TStringPackage>(&Engine); }

  ITavoValue Run(const char16_t* Name, std::initializer_list<ITavoValue> Arguments = {}) {
    IFunCall Call = Make<TFunctionCall>(&Engine, Name);
    for (const ITavoValue& Argument : Arguments) Call->AddArgument(Argument);
    return Call->Execute(&Context);
  }
  String Shown(const char16_t* Name, std::initializer_list<ITavoValue> Arguments = {}) {
    return Typed(Run(Name, Arguments));
  }
  String Failure(const char16_t* Name, std::initializer_list<ITavoValue> Arguments = {}) {
    return FailureOf([&] { Run(Name, Arguments); });
  }

  TInferenceEngine Engine;
  TTavoContext Context{nullptr, &Engine};
};

TEST_F(StringPackageTest, JoiningAndCaseKeepTheirResultTypes) {
  EXPECT_EQ(Shown(u"str-cat", {Str(u"a"), Atom(u"b"), Int(1), Flt(2.5)}), u"dtString \"ab12.5000\"");
  EXPECT_EQ(Shown(u"str-cat"), u"dtString \"\"");
  EXPECT_EQ(Shown(u"sym-cat", {Str(u"a"), Int(1)}), u"dtAtom a1");
  EXPECT_EQ(Shown(u"upcase", {Str(u"abc")}), u"dtString \"ABC\"");
  EXPECT_EQ(Shown(u"upcase", {Atom(u"abc")}), u"dtAtom ABC");
  EXPECT_EQ(Shown(u"lowcase", {Str(u"\u00C4B")}), u"dtString \"\u00E4b\"");
  EXPECT_EQ(Shown(u"lowcase", {Atom(u"XY")}), u"dtAtom xy");
  // A nested call is evaluated before it is joined.
  IFunCall Outer = Make<TFunctionCall>(&Engine, u"str-cat");
  Outer->AddArgument(Str(u"<"));
  IFunCall Inner = Make<TFunctionCall>(&Engine, u"upcase");
  Inner->AddArgument(Atom(u"x"));
  Outer->AddArgument(Inner);
  EXPECT_EQ(Outer->Execute(&Context)->GetAsString(), u"<X");
}

TEST_F(StringPackageTest, CompareIndexAndLengthWorkOnCodeUnits) {
  EXPECT_LT(Run(u"str-compare", {Str(u"a"), Str(u"b")})->GetAsInteger(), 0);
  EXPECT_GT(Run(u"str-compare", {Atom(u"b"), Str(u"a")})->GetAsInteger(), 0);
  EXPECT_EQ(Run(u"str-compare", {Atom(u"a"), Str(u"a")})->GetAsInteger(), 0);
  EXPECT_LT(Run(u"str-compare", {Str(u"A"), Str(u"a")})->GetAsInteger(), 0) << "case-sensitive";
  EXPECT_EQ(Shown(u"str-index", {Str(u"bc"), Str(u"abcbc")}), u"dtInteger 2");
  EXPECT_EQ(Run(u"str-index", {Str(u"z"), Str(u"abc")}), FCFalse);
  EXPECT_EQ(Run(u"str-index", {Str(u""), Str(u"abc")}), FCFalse);
  EXPECT_EQ(Shown(u"str-length", {Str(u"abc")}), u"dtInteger 3");
  EXPECT_EQ(Shown(u"str-length", {Flt(1)}), u"dtInteger 6") << "the text of 1.0 is 1.0000";
  EXPECT_EQ(Failure(u"str-length"), u"Too few arguments for str-length");
}

TEST_F(StringPackageTest, SubStringClipsAtTheEndAndRefusesBadPositions) {
  EXPECT_EQ(Shown(u"sub-string", {Int(2), Int(3), Atom(u"abc")}), u"dtString \"bc\"");
  EXPECT_EQ(Shown(u"sub-string", {Int(2), Int(10), Str(u"abc")}), u"dtString \"bc\"");
  EXPECT_EQ(Shown(u"sub-string", {Int(2), Int(1), Str(u"abc")}), u"dtString \"\"");
  EXPECT_EQ(Failure(u"sub-string", {Int(0), Int(1), Str(u"abc")}), u"Invalid substring parameters: 0, 2");
  EXPECT_EQ(Failure(u"sub-string", {Int(3), Int(1), Str(u"abc")}), u"Invalid substring parameters: 3, -1");
  EXPECT_EQ(Failure(u"sub-string", {Int(4), Int(4), Str(u"abc")}), u"Invalid substring parameters: 4, 1");
  EXPECT_EQ(Failure(u"sub-string", {Int(1), Int(1), Str(u"")}), u"Invalid substring parameters: 1, 1");
  EXPECT_EQ(Failure(u"sub-string", {Int(-2147483647 - 1), Int(2147483647), Str(u"abc")}),
            u"Invalid substring parameters: -2147483648, 0");
}

TEST_F(StringPackageTest, StrFormatFillsConversionsAndKeepsSurplusArguments) {
  EXPECT_EQ(Shown(u"str-format", {Str(u"a%nb%d"), Int(1)}), u"dtString \"a\r\nb1\"");
  EXPECT_EQ(Run(u"str-format", {Str(u"x"), Int(1)})->GetAsString(), u"x 1");
  EXPECT_EQ(Run(u"str-format", {Str(u"%d %d"), Int(1)})->GetAsString(), u"1 %d");
  EXPECT_EQ(Failure(u"str-format", {Str(u"x")}), u"Too few arguments for str-format");
}

TEST(ControlStringFormatTest, DirectivesGoToTheCommonFormatter) {
  EXPECT_EQ(Formatted(u"[%5d|%-4d|%x]", {Int(42), Int(7), Int(255)}), u"[   42|7   |FF]");
  EXPECT_EQ(Formatted(u"%.2f %e", {Str(u"3.14159"), Int(1)}), u"3.14 1.00000000000000E+000");
  EXPECT_EQ(Formatted(u"%d", {Flt(2.7)}), u"2") << "the integer reader truncates";
  EXPECT_EQ(Formatted(u"%s/%s", {Atom(u"abc"), Str(u"q")}), u"abc/\"q\"") << "a string item keeps its quotes";
  EXPECT_EQ(Formatted(u"%.2s", {Atom(u"abc")}), u"ab");
  EXPECT_EQ(Formatted(u"%%d", {Int(5)}), u"%d") << "%% is not set apart";
  EXPECT_EQ(FailureOf([] { Formatted(u"%d", {Atom(u"abc")}); }),
            u"Not a integer type.  Value (abc) is a dtAtom type");
}

TEST(ControlStringFormatTest, ItemsWithoutAConversionAreDroppedOrAppended) {
  // An unknown conversion drops the item; the next one meets the same "%".
  EXPECT_EQ(Formatted(u"a%qb", {Int(1), Int(2)}), u"a%qb");
  EXPECT_EQ(Formatted(u"%n%n%d", {Int(1)}), u"\r\n\r\n1");
  EXPECT_EQ(Formatted(u"%d%n", {Int(1)}), u"1\r\n");
  EXPECT_EQ(Formatted(u"%5n", {Int(1)}), u"%5n") << "a line end takes no width";
  EXPECT_EQ(Formatted(u"x", {Str(u"s"), Make<TTavoValue>(7, dtFactId), Atom(u"a"), Flt(1)}),
            u"x s 7 a 1.0000");
  IValueVector List = Make<TValueVector>();
  List->Add(Int(1));
  List->Add(Int(2));
  EXPECT_EQ(Formatted(u"x", {Make<TTavoValue>(List)}), u"x (" + Make<TTavoValue>(List)->ToString() + u")");
  // An item's own "%" is met by the next item.
  EXPECT_EQ(Formatted(u"%s %d", {Atom(u"50%"), Int(7)}), u"50% %d");
  EXPECT_EQ(Formatted(u"%d", {}), u"%d");
}

}  // namespace
}  // namespace tavo
