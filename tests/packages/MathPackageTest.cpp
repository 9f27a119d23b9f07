#include "packages/MathPackage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "core/TavoEvaluator.h"
#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

// The type and the printed form in one text, so that 3 and 3.0 differ.
String Typed(const ITavoValue& V) { return GetTavoTypeName(V->GetDType()) + u" " + V->ToString(); }

class MathPackageTest : public ::testing::Test {
 protected:
  MathPackageTest() { NewComponent<TMathPackage>(&Engine); }

  IFunCall Build(const char16_t* Name, std::initializer_list<ITavoValue> Arguments) {
    IFunCall Call = Make<TFunctionCall>(&Engine, Name);
    for (const ITavoValue& Argument : Arguments) Call->AddArgument(Argument);
    return Call;
  }
  ITavoValue Run(const char16_t* Name, std::initializer_list<ITavoValue> Arguments = {}) {
    return Build(Name, Arguments)->Execute(&Context);
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

TEST_F(MathPackageTest, SumsProductsAndDifferencesTurnFloatOnlyOnAFloatArgument) {
  EXPECT_EQ(Shown(u"+"), u"dtInteger 0");
  EXPECT_EQ(Shown(u"*"), u"dtInteger 1");
  EXPECT_EQ(Shown(u"+", {Int(1), Int(2)}), u"dtInteger 3");
  EXPECT_EQ(Shown(u"+", {Int(1), Flt(2.0)}), u"dtFloat 3.0000");
  EXPECT_EQ(Shown(u"*", {Flt(2.5), Int(2)}), u"dtFloat 5.0000");
  EXPECT_EQ(Shown(u"-", {Int(5)}), u"dtInteger 5") << "one argument is not negated";
  EXPECT_EQ(Shown(u"-", {Flt(-1.5)}), u"dtFloat -1.5000");
  EXPECT_EQ(Shown(u"-", {Int(10), Int(3), Int(2)}), u"dtInteger 5");
  // A numeric text reads as a number but sets no float mark: the result is
  // rounded, ties to even.
  EXPECT_EQ(Shown(u"+", {Str(u"2.5"), Int(0)}), u"dtInteger 2");
  EXPECT_EQ(Shown(u"+", {Str(u"3.5"), Int(0)}), u"dtInteger 4");
  EXPECT_EQ(Failure(u"+", {Int(1), Str(u"abc")}), u"Not a numeric type.  Value (\"abc\") is a dtString type");
  EXPECT_EQ(Failure(u"-"), u"Too few arguments for -");
  // Arguments are evaluated: a nested call counts by its result's type.
  IFunCall Outer = Build(u"+", {Int(1)});
  Outer->AddArgument(Build(u"*", {Int(2), Flt(3)}));
  EXPECT_EQ(Typed(Outer->Execute(&Context)), u"dtFloat 7.0000");
}

TEST_F(MathPackageTest, IntegerResultsWrapAt32BitsAndLoseDigitsBeyondTheDouble) {
  EXPECT_EQ(Shown(u"+", {Int(2147483647), Int(1)}), u"dtInteger -2147483648");
  EXPECT_EQ(Shown(u"-", {Int(-2147483647 - 1), Int(1)}), u"dtInteger 2147483647");
  EXPECT_EQ(Shown(u"*", {Int(65536), Int(65536)}), u"dtInteger 0");
  // 2^53 + 1 has no double; the sum lands on 2^53, whose low 32 bits are 0.
  EXPECT_EQ(Shown(u"+", {Str(u"9007199254740992"), Int(1)}), u"dtInteger 0");
  EXPECT_EQ(Shown(u"+", {Str(u"9007199254740992"), Int(2)}), u"dtInteger 2");
}

// Comparisons and arithmetic read numbers without making values where they
// can; that road must answer exactly as the general one, kinds included,
// and leave to it whatever it cannot read.
TEST_F(MathPackageTest, NumbersReadWithoutValuesAgreeWithTheGeneralRoad) {
  const std::initializer_list<ITavoValue> Cases[] = {
      {Int(1), Int(2)},
      {Int(2147483647), Int(1)},
      {Int(-2147483647 - 1), Int(1)},
      {Int(65536), Int(65536), Int(3)},
      {Int(59049), Int(59049), Int(59049), Int(59049), Int(3)},
      {Flt(2.5), Int(2)},
      {Int(1), Flt(-0.5), Int(7)},
      {Flt(1e300), Flt(1e300)},
      {Int(5)},
  };
  for (const char16_t* Name : {u"+", u"-", u"*"})
    for (const auto& Arguments : Cases) {
      IFunCall Call = Build(Name, Arguments);
      const ITavoValue General = Call->Execute(&Context);
      TNumber Number;
      ASSERT_TRUE(EvaluateNumber(Make<TTavoValue>(Call), &Context, Number)) << StringToUtf8(Typed(General));
      const ITavoValue Read = Number.IsFloat ? Flt(Number.Float) : Int(Number.Integer);
      EXPECT_EQ(Typed(Read), Typed(General)) << StringToUtf8(Name);
    }
  // Text, nil and a call of a function without a numeric road go the
  // general way.
  TNumber Number;
  IFunCall WithText = Build(u"+", {Int(1), Str(u"2")});
  WithText->Execute(&Context);
  EXPECT_FALSE(EvaluateNumber(Make<TTavoValue>(WithText), &Context, Number));
  EXPECT_FALSE(EvaluateNumber(FCNil, &Context, Number));
  IFunCall Absolute = Build(u"abs", {Int(-3)});
  Absolute->Execute(&Context);
  EXPECT_FALSE(EvaluateNumber(Make<TTavoValue>(Absolute), &Context, Number));
  // The comparisons answer the same either way.
  const struct {
    const char16_t* Code;
    const char16_t* Answer;
  } Comparisons[] = {{u"(= (+ 1 \"2\") 3)", u"TRUE"},      {u"(= (+ 1 2) 3.0 (- 6 3))", u"TRUE"},
                     {u"(< 1 (- 5 2.5) 3)", u"TRUE"},       {u"(<> 1 (* 1 1.0))", u"FALSE"},
                     {u"(<> \"1\" 2 3)", u"TRUE"},          {u"(>= 3 \"3\" (abs -2))", u"TRUE"},
                     {u"(> (* 65536 65536) -1)", u"TRUE"}, {u"(<= 1 1 (+ 2147483647 1))", u"FALSE"}};
  for (const auto& Comparison : Comparisons)
    EXPECT_EQ(Engine.ParseNExecuteFunCall(Comparison.Code)->ToString(), Comparison.Answer)
        << StringToUtf8(Comparison.Code);
}

TEST_F(MathPackageTest, DivisionCorners) {
  EXPECT_EQ(Shown(u"/", {Int(4)}), u"dtFloat 4.0000");
  EXPECT_EQ(Shown(u"/", {Int(1), Int(4)}), u"dtFloat 0.2500");
  EXPECT_EQ(Shown(u"/", {Int(8), Int(2), Int(2)}), u"dtFloat 2.0000");
  EXPECT_EQ(Run(u"/", {Int(1), Int(0)})->GetAsNumeric(), INFINITY) << "the float division's own answer";
  EXPECT_TRUE(std::isnan(Run(u"/", {Int(0), Flt(0)})->GetAsNumeric()));

  EXPECT_EQ(Shown(u"div", {Int(5)}), u"dtInteger 5");
  EXPECT_EQ(Shown(u"div", {Int(-7), Int(2)}), u"dtInteger -3") << "truncates toward zero";
  EXPECT_EQ(Shown(u"div", {Int(100), Int(3), Int(3)}), u"dtInteger 11");
  EXPECT_EQ(Shown(u"div", {Flt(7.9), Int(2)}), u"dtInteger 3") << "the integer reader truncates first";
  EXPECT_EQ(Shown(u"mod", {Int(-7), Int(2)}), u"dtInteger -1");
  EXPECT_EQ(Shown(u"mod", {Int(7), Int(-2)}), u"dtInteger 1");
  EXPECT_EQ(Failure(u"div", {Int(1), Int(0)}), u"Division by zero");
  EXPECT_EQ(Failure(u"div", {Int(1), Int(2), Int(0)}), u"Division by zero");
  EXPECT_EQ(Failure(u"mod", {Int(1), Int(0)}), u"Division by zero");
  EXPECT_EQ(Failure(u"div", {Int(-2147483647 - 1), Int(-1)}), u"Integer overflow");
  EXPECT_EQ(Failure(u"mod", {Int(-2147483647 - 1), Int(-1)}), u"Integer overflow");
  EXPECT_EQ(Failure(u"mod", {Int(1), Int(2), Int(3)}), u"Too many arguments for mod");
}

TEST_F(MathPackageTest, ConversionsAndAbsoluteValues) {
  EXPECT_EQ(Shown(u"abs", {Int(-3)}), u"dtInteger 3");
  EXPECT_EQ(Shown(u"abs", {Flt(-2.5)}), u"dtFloat 2.5000");
  EXPECT_EQ(Shown(u"abs", {Int(-2147483647 - 1)}), u"dtInteger -2147483648");
  EXPECT_EQ(Failure(u"abs", {Make<TTavoValue>(String(u"a"), dtAtom)}),
            u"Expected numeric argument to abs function call");
  EXPECT_EQ(Failure(u"abs", {Str(u"-3")}), u"Expected numeric argument to abs function call")
      << "a numeric text is not coerced";
  EXPECT_EQ(Shown(u"round", {Flt(2.5)}), u"dtInteger 2");
  EXPECT_EQ(Shown(u"round", {Flt(3.5)}), u"dtInteger 4");
  EXPECT_EQ(Shown(u"round", {Flt(-2.5)}), u"dtInteger -2");
  EXPECT_EQ(Shown(u"round", {Flt(-2.6)}), u"dtInteger -3");
  EXPECT_EQ(Shown(u"integer", {Flt(-2.9)}), u"dtInteger -2");
  EXPECT_EQ(Shown(u"float", {Int(3)}), u"dtFloat 3.0000");
}

TEST_F(MathPackageTest, MaxAndMinKeepTheFirstOfEqualsAndStayFloatOnceFloat) {
  EXPECT_EQ(Shown(u"max", {Flt(1.5), Int(3)}), u"dtFloat 3.0000");
  EXPECT_EQ(Shown(u"max", {Int(3), Flt(1.5)}), u"dtInteger 3");
  EXPECT_EQ(Shown(u"min", {Int(3), Flt(1.5), Int(1)}), u"dtFloat 1.0000");
  EXPECT_EQ(Shown(u"max", {Int(2), Flt(2.0)}), u"dtInteger 2");
  EXPECT_EQ(Shown(u"min", {Flt(2.0), Int(2)}), u"dtFloat 2.0000");
  EXPECT_EQ(Shown(u"min", {Int(-4)}), u"dtInteger -4");
}

TEST_F(MathPackageTest, TranscendentalFunctionsGiveFloats) {
  EXPECT_EQ(Shown(u"exp", {Int(0)}), u"dtFloat 1.0000");
  EXPECT_EQ(Shown(u"**", {Int(2), Int(10)}), u"dtFloat 1024.0000");
  EXPECT_EQ(Shown(u"sqrt", {Int(16)}), u"dtFloat 4.0000");
  EXPECT_EQ(Shown(u"log", {Int(1)}), u"dtFloat 0.0000");
  EXPECT_EQ(Shown(u"log10", {Int(1000)}), u"dtFloat 3.0000");
  EXPECT_EQ(Shown(u"PI"), u"dtFloat 3.1416");
  EXPECT_EQ(Failure(u"PI", {Int(1)}), u"Too many arguments for PI");
}

TEST_F(MathPackageTest, RandomNumbersStayInTheirRangeAndRepeatAfterTheSameSeed) {
  std::set<int32_t> Seen;
  for (int I = 0; I < 200; ++I) {
    int32_t Plain = Run(u"random")->GetAsInteger();
    EXPECT_TRUE(Plain >= 0 && Plain <= 65535) << Plain;
    Seen.insert(Run(u"random", {Int(10), Int(5)})->GetAsInteger());
  }
  EXPECT_EQ(Seen, (std::set<int32_t>{10, 11, 12, 13, 14})) << "the second argument is a width";
  EXPECT_EQ(Run(u"random", {Int(1)})->GetAsInteger(), 0);

  auto Draw = [&] {
    String Numbers;
    for (int I = 0; I < 5; ++I) Numbers += Run(u"random", {Int(1000000)})->ToString() + u" ";
    return Numbers;
  };
  EXPECT_EQ(Run(u"seed", {Int(42)}), FCTrue);
  String First = Draw();
  EXPECT_EQ(Run(u"randomize", {Int(42)}), FCTrue);
  EXPECT_EQ(Draw(), First);
  EXPECT_EQ(Run(u"randomize"), FCTrue);
}

TEST(MathPackageSetupTest, PackageInstallsItsFunctionsInOrder) {
  TInferenceEngine Engine;
  auto* Package = NewComponent<TMathPackage>(&Engine);
  EXPECT_EQ(Package->GetFunctions().ToString(),
            u"/\r\n-\r\nmod\r\n+\r\n*\r\nabs\r\ndiv\r\nexp\r\n**\r\nPI\r\nfloat\r\ninteger\r\nmax\r\nmin\r\n"
            u"log\r\nlog10\r\nrandom\r\nrandomize\r\nround\r\nsqrt\r\nseed\r\n");
  IUserFunction Random = Engine.GetUserFunction(u"random");
  ASSERT_TRUE(Random);
  EXPECT_EQ(Random->GetArgumentString(), u" [[<low-integer-expression>] <high-integer-expression>]");
  EXPECT_EQ(Random->GetMaxArgumentCount(), 2);
  EXPECT_EQ(Random->ClassName(), u"TRandomFunction");
}

}  // namespace
}  // namespace tavo

namespace tavo {
namespace {

using namespace testvalues;

class IntegerArithmeticTest : public ::testing::Test {
 protected:
  String Shown(const char16_t* Name, std::initializer_list<ITavoValue> Arguments) {
    IFunCall Call = Make<TFunctionCall>(&Engine, Name);
    for (const ITavoValue& Argument : Arguments) Call->AddArgument(Argument);
    ITavoValue V = Call->Execute(&Context);
    return GetTavoTypeName(V->GetDType()) + u" " + V->ToString();
  }
  TInferenceEngine Engine;
  TTavoContext Context{nullptr, &Engine};
};

// Integers add up exactly, and the answer is the low 32 bits of the total
// that double arithmetic reaches, saturated beyond 64 bits.
TEST_F(IntegerArithmeticTest, TotalsWrapAsDoubleArithmeticWouldHaveThem) {
  EXPECT_EQ(Shown(u"+", {Int(2147483647), Int(1)}), u"dtInteger -2147483648");
  EXPECT_EQ(Shown(u"-", {Int(-2147483647 - 1), Int(1)}), u"dtInteger 2147483647");
  EXPECT_EQ(Shown(u"*", {Int(100000), Int(100000)}), u"dtInteger 1410065408");
  EXPECT_EQ(Shown(u"*", {Int(65536), Int(65536), Int(65536), Int(65536)}), u"dtInteger -1");
  EXPECT_EQ(Shown(u"*", {Int(-65536), Int(65536), Int(65536), Int(65536)}), u"dtInteger 0");
  // Past 2^53 the total is a double's: 3^40 is not exact in one.
  EXPECT_EQ(Shown(u"*", {Int(59049), Int(59049), Int(59049), Int(59049), Int(3)}),
            u"dtInteger " + IntToStr(TruncToInt32(59049.0 * 59049.0 * 59049.0 * 59049.0 * 3.0)));
  // Text reads as a number but makes no float; a fraction is rounded.
  EXPECT_EQ(Shown(u"+", {Int(1), Str(u"2")}), u"dtInteger 3");
  EXPECT_EQ(Shown(u"+", {Int(1), Str(u"2.6")}), u"dtInteger 4");
  EXPECT_EQ(Shown(u"+", {Int(1), Flt(2.5), Int(1)}), u"dtFloat 4.5000");
  EXPECT_EQ(Shown(u"-", {Int(5)}), u"dtInteger 5");
}

}  // namespace
}  // namespace tavo
