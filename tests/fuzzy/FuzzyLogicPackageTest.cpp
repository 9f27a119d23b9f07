#include "fuzzy/FuzzyLogicPackage.h"

#include <gtest/gtest.h>

#include <vector>

#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

// An engine with every package, a fuzzy type "temp" from 0 to 100 with the
// terms cold and hot, a template "reading" of one temp slot and a crisp
// template "note"; what it prints is kept.
struct TFuzzyFixture : ::testing::Test {
  TInferenceEngine Engine;
  String Printed;
  String PrintedTo;

  TFuzzyFixture() {
    Engine.OnPrintOut = [this](TObject*, const String& OutID, const String& Text) {
      PrintedTo = OutID;
      Printed += Text;
    };
    Engine.Parse(
        u"(deftype temp extends (type FUZZY) (range 0 100)"
        u"  (values (term cold ((0 1) (50 0))) (term hot ((50 0) (100 1)))))"
        u"(deftemplate reading (slot t (type temp))) (deftemplate note (slot text))");
  }

  ITavoValue Eval(const String& Text) { return Engine.ParseNExecuteFunCall(Text); }
  IFuzzySet Set(const String& Text) { return Eval(Text)->GetAsFuzzy(); }
  double Number(const String& Text) { return Eval(Text)->GetAsNumeric(); }
  IFuzzySet Points(const String& Text) { return Engine.ParseValue(Text)->Resolve(nullptr)->GetAsFuzzy(); }
  String Failure(const String& Text) {
    return FailureOf([&] { Eval(Text); });
  }
  // The set of the one reading fact.
  IFuzzySet Reading() {
    std::vector<IFuzzySet> Found;
    for (int I = 0; I < Engine.GetFacts()->Count(); ++I)
      if (const IFact& Fact = Engine.GetFacts()->Get(I); Fact->GetTemplate()->GetTemplateName() == u"reading")
        Found.push_back(Fact->GetValue(u"t")->GetAsFuzzy());
    EXPECT_EQ(Found.size(), 1u);
    return Found.empty() ? IFuzzySet() : Found.back();
  }
};

using TFuzzyShapeTest = TFuzzyFixture;
using TFuzzyValueTest = TFuzzyFixture;
using TFuzzyAssertTest = TFuzzyFixture;
using TFuzzyPlotTest = TFuzzyFixture;

TEST_F(TFuzzyShapeTest, SRisesThroughHalfAtTheMidpointAndZMirrorsIt) {
  IFuzzySet S = Set(u"(s 0 10)");
  IFuzzySet Z = Set(u"(z 0 10)");
  EXPECT_EQ(S->GetCount(), 15) << "seven steps each side of the inflection";
  EXPECT_DOUBLE_EQ(S->DegreeOfMembership(0), 0);
  EXPECT_DOUBLE_EQ(S->DegreeOfMembership(5), 0.5);
  EXPECT_DOUBLE_EQ(S->DegreeOfMembership(10), 1);
  EXPECT_LT(S->DegreeOfMembership(2), 0.2) << "a curve, not a straight line";
  for (double X : {0.0, 1.5, 5.0, 6.25, 10.0}) {
    EXPECT_NEAR(Z->DegreeOfMembership(X), 1 - S->DegreeOfMembership(X), 1e-12) << X;
    EXPECT_NEAR(Z->DegreeOfMembership(X), S->DegreeOfMembership(10 - X), 1e-12) << X;
  }
  // A new set of no variable and no name, that compares with values.
  EXPECT_EQ(S->GetVariable(), nullptr);
  EXPECT_EQ(S->GetName(), u"");
  EXPECT_EQ(S->GetParser(), static_cast<IFuzzyParser*>(&Engine));
  EXPECT_NE(dynamic_cast<TTavoFuzzySet*>(S.Get()), nullptr);
}

TEST_F(TFuzzyShapeTest, TriangleAndPiTakeTheirPointsInTheirOrder) {
  IFuzzySet Tri = Set(u"(tri 1 2 4)");
  EXPECT_TRUE(Tri->SamePoints(*Points(u"((1 0) (2 1) (4 0))"), 0));
  // Center and range, or left, center and right.
  IFuzzySet Around = Set(u"(pi 50 10)");
  EXPECT_TRUE(Around->SamePoints(*Set(u"(pi 40 50 60)"), 1e-12));
  EXPECT_DOUBLE_EQ(Around->GetX(0), 40);
  EXPECT_DOUBLE_EQ(Around->DegreeOfMembership(45), 0.5);
  IFuzzySet Lopsided = Set(u"(pi 40 50 70)");
  EXPECT_DOUBLE_EQ(Lopsided->DegreeOfMembership(50), 1);
  EXPECT_DOUBLE_EQ(Lopsided->DegreeOfMembership(60), 0.5);
  EXPECT_DOUBLE_EQ(Lopsided->DegreeOfMembership(70), 0);
}

TEST_F(TFuzzyShapeTest, BetaWithoutAnInflectionTakesItMidwayBetweenCenterAndRange) {
  IFuzzySet Two = Set(u"(beta 50 20)");
  EXPECT_TRUE(Two->SamePoints(*Set(u"(beta 50 20 35)"), 1e-12));
  EXPECT_DOUBLE_EQ(Two->GetX(0), 30);
  EXPECT_DOUBLE_EQ(Two->DegreeOfMembership(50), 1);
  // The weight scales the distance from the center, counted in inflections.
  IFuzzySet Weighed = Set(u"(beta 50 20 10 3)");
  for (int I = 0; I < Weighed->GetCount(); ++I) {
    const double D = (Weighed->GetX(I) - 50) / 10;
    EXPECT_NEAR(Weighed->GetY(I), 1 / (1 + 3 * D * D), 1e-12) << I;
  }
}

TEST_F(TFuzzyShapeTest, ShapesTakeTheirNumbersOfArgumentsAndMakeTerms) {
  EXPECT_EQ(Failure(u"(tri 1 2)"), u"Too few arguments for tri");
  EXPECT_EQ(Failure(u"(s 1 2 3)"), u"Too many arguments for s");
  EXPECT_EQ(Failure(u"(pi 1 2 3 4)"), u"Too many arguments for pi");
  EXPECT_EQ(Failure(u"(beta 1 2 3 4 5)"), u"Too many arguments for beta");
  Engine.Parse(u"(deftype level extends (type FUZZY) (range 0 10) (values (term mid (tri 2 5 8))))");
  const IFuzzyVariable& Level = Engine.FindDefinedType(u"level")->GetFuzzyType();
  TIFuzzySet* Mid = Level->FindFuzzySet(u"mid");
  ASSERT_NE(Mid, nullptr);
  EXPECT_DOUBLE_EQ(Mid->DegreeOfMembership(3.5), 0.5);
  EXPECT_EQ(Mid->GetVariable(), Level.Get());
}

TEST_F(TFuzzyValueTest, CreateFuzzyValueReadsAnExpressionOverTheTypesTerms) {
  IFuzzySet VeryHot = Set(u"(create-fuzzy-value temp very hot)");
  EXPECT_DOUBLE_EQ(VeryHot->DegreeOfMembership(75), 0.25);
  EXPECT_EQ(VeryHot->GetVariable()->GetName(), u"temp");
  // A fuzzy value names its variable as the type's name does.
  IFuzzySet Either = Set(u"(create-fuzzy-value (create-fuzzy-value temp hot) cold or hot)");
  EXPECT_DOUBLE_EQ(Either->DegreeOfMembership(0) + Either->DegreeOfMembership(100), 2);
  // A set made by a call joins the variable.
  EXPECT_EQ(Eval(u"(get-fs-variable (create-fuzzy-value temp (tri 10 20 30)))")->GetAsString(), u"temp");
  EXPECT_EQ(Failure(u"(create-fuzzy-value nothing hot)"), u"type name unknown or invalid: nothing");
  EXPECT_EQ(Failure(u"(create-fuzzy-value 3 hot)"),
            u"Invalid argument type for deffunction: \"dtInteger\".  Expected dtAtom, dtString, dtFuzzy");
  EXPECT_EQ(Failure(u"(create-fuzzy-value (tri 1 2 3) hot)"), u"fuzzy variable is not defined");
}

TEST_F(TFuzzyValueTest, GetFsReadsAValueAFactOrAFactId) {
  Eval(u"(assert (reading (t cold)))");
  const ITavoValue Pairs = Eval(u"(get-fs (tri 1 2 3))");
  ASSERT_EQ(Pairs->GetDType(), dtSingletons);
  EXPECT_EQ(Pairs->GetAsSingletons()->GetXValues(1)->GetDType(), dtFloat);
  EXPECT_TRUE(Pairs->Resolve(nullptr)->GetAsFuzzy()->SamePoints(*Set(u"(tri 1 2 3)"), 0)) << "reads back";
  Engine.GetContext()->SetVariable(u"f", Make<TTavoValue>(Engine.GetFacts()->GetFactByID(1)));
  for (const String Source : {u"1", u"?f"}) {
    EXPECT_EQ(Eval(u"(get-fs-length " + Source + u")")->GetAsInteger(), 2);
    EXPECT_DOUBLE_EQ(Number(u"(get-fs-x " + Source + u" 1)"), 50);
    EXPECT_DOUBLE_EQ(Number(u"(get-fs-y " + Source + u" 0)"), 1);
    EXPECT_DOUBLE_EQ(Number(u"(get-fs-value " + Source + u" 25)"), 0.5);
    EXPECT_EQ(Eval(u"(get-fs-variable " + Source + u")")->GetAsString(), u"temp");
  }
  EXPECT_DOUBLE_EQ(GetFuzzySetFromValue(Engine, Make<TTavoValue>(1, dtFactId), nullptr)->DegreeOfMembership(25), 0.5);
  EXPECT_TRUE(Eval(u"(get-fs-variable (s 1 2))")->Equals(FCNil));

  Eval(u"(assert (note (text hello)))");
  EXPECT_EQ(Failure(u"(get-fs 99)"), u"No Such Fact with ID=99 exists");
  EXPECT_EQ(Failure(u"(get-fs 2)"), u"Fact is not a fuzzy fact");
  EXPECT_EQ(Failure(u"(get-fs-x (tri 1 2 3) 3)"), u"List index out of bounds (3)");
  EXPECT_EQ(Failure(u"(get-fs \"text\")"), u"Not a fuzzy value type.  Value (\"text\") is a dtString type");
}

TEST_F(TFuzzyValueTest, TheFuzzySlotOfAFactIsItsFirstWithNumbersAndListsReadAsSets) {
  Engine.Parse(u"(deftemplate pair (slot label) (slot low (type temp)) (slot zhigh (type temp)))");
  IFact Fact = Engine.FindFactTemplate(u"pair")->NewFact();
  const int Low = Fact->GetTemplate()->GetLayout()->IndexOf(u"low");
  Fact->StoreValueAt(Fact->GetTemplate()->GetLayout()->IndexOf(u"zhigh"), Make<TTavoValue>(Set(u"(s 1 2)")));
  // A number stands for the set true at that number alone.
  Fact->StoreValueAt(Low, Make<TTavoValue>(30, dtInteger));
  EXPECT_DOUBLE_EQ(GetFuzzySlot(Fact)->DegreeOfMembership(30), 1);
  EXPECT_DOUBLE_EQ(GetFuzzySlot(Fact)->DegreeOfMembership(31), 0);
  Fact->StoreValueAt(Low,
                     testvalues::List({Make<TTavoValue>(Set(u"(tri 0 10 20)")), Make<TTavoValue>(Set(u"(s 1 2)"))}));
  EXPECT_DOUBLE_EQ(GetFuzzySlot(Fact)->DegreeOfMembership(10), 1) << "a list gives its first member";
  EXPECT_FALSE(GetFuzzySlot(Engine.FindFactTemplate(u"note")->NewFact()));
}

TEST_F(TFuzzyValueTest, GetUTakesATypeAValueOrAFactAndNothingElse) {
  Engine.Parse(u"(deftype weight extends (type FUZZY) (range 0 100) (units kg))"
               u"(deftype plain extends (type INTEGER))");
  EXPECT_EQ(Eval(u"(get-u weight)")->GetAsString(), u"0.0000 - 100.0000 kg");
  Eval(u"(assert (reading (t hot)))");
  EXPECT_EQ(Eval(u"(get-u 1)")->GetAsString(), u"0.0000 - 100.0000 ");
  EXPECT_DOUBLE_EQ(Number(u"(get-u-to (create-fuzzy-value temp cold))"), 100);
  EXPECT_EQ(Failure(u"(get-u 1.5)"), u"Invalid argument type for deffunction: \"dtFloat\".  Expected dtAtom, "
                                     u"dtString, dtInteger, dtFactId, dtFact, dtFuzzy");
  EXPECT_EQ(Failure(u"(get-u plain)"), u"type name unknown or invalid: plain");
  EXPECT_EQ(Failure(u"(get-u (tri 1 2 3))"), u"fuzzy variable is not defined");
  EXPECT_EQ(Failure(u"(get-u 7)"), u"No Such Fact with ID=7 exists");
}

TEST_F(TFuzzyValueTest, UnionAndIntersectionCombineEveryArgumentAndLeaveTheFirstAlone) {
  IFuzzySet Either = Set(u"(fuzzy-union (create-fuzzy-value temp cold) (create-fuzzy-value temp hot))");
  EXPECT_DOUBLE_EQ(Either->DegreeOfMembership(0) + Either->DegreeOfMembership(100), 2);
  EXPECT_DOUBLE_EQ(Set(u"(create-fuzzy-value temp cold)")->DegreeOfMembership(100), 0) << "the term is unchanged";
  EXPECT_DOUBLE_EQ(Set(u"(fuzzy-intersection (tri 0 50 100) (tri 25 50 75) (s 40 60))")->DegreeOfMembership(50), 0.5);
  // Flat sets show each operation plainly.
  const String Flat = u" ((0 0.5) (100 0.5)) ((0 0.6) (100 0.6)))";
  EXPECT_DOUBLE_EQ(Set(u"(fuzzy-intersection-x product" + Flat)->DegreeOfMembership(30), 0.3);
  EXPECT_DOUBLE_EQ(Set(u"(fuzzy-union-x bounded-sum" + Flat)->DegreeOfMembership(30), 1);
  EXPECT_DOUBLE_EQ(Set(u"(fuzzy-union-x mean-sqr" + Flat)->DegreeOfMembership(30), (0.25 + 0.36) / 2);
  EXPECT_EQ(Failure(u"(fuzzy-union-x maximum (tri 0 1 2) (tri 1 2 3))"),
            u"Invalid Fuzzy operation specified (maximum) for fuzzy-union-x, expected zadeh, mean, mean-sqr, "
            u"mean-sqrt, product, bounded-sum, or sum");
  EXPECT_EQ(Failure(u"(fuzzy-union-x zadeh (tri 0 1 2))"), u"Too few arguments for fuzzy-union-x");
}

TEST_F(TFuzzyValueTest, UndecidableAndCompatibilityReadTheAreaAndTheHeight) {
  EXPECT_TRUE(Eval(u"(is-undecidable ((0 0) (10 0)))")->Equals(FCTrue));
  EXPECT_TRUE(Eval(u"(is-undecidable (tri 0 1 2))")->Equals(FCFalse)) << "a new set that has an area";
  EXPECT_DOUBLE_EQ(Number(u"(get-compatibility-index ((0 0) (5 0.4) (10 0)))"), 0.4);
  EXPECT_DOUBLE_EQ(Number(u"(maximum-defuzzify ((0 1) (4 1) (10 0)))"), 2);
}

TEST_F(TFuzzyValueTest, SettersClampAndRefuseUnknownNames) {
  EXPECT_TRUE(Eval(u"(set-fuzzy-auto-terms FALSE)")->Equals(FCTrue));
  Engine.Parse(u"(deftype bare extends (type FUZZY) (range 0 10))");
  EXPECT_EQ(Engine.FindDefinedType(u"bare")->GetFuzzyType()->GetFuzzySetCount(), 0) << "no default terms";
  const float Former = Engine.GetFuzzyEqualsThreshold();
  EXPECT_DOUBLE_EQ(Number(u"(set-fuzzy-threshold 3)"), Former);
  EXPECT_DOUBLE_EQ(Number(u"(get-fuzzy-threshold)"), 1);
  EXPECT_DOUBLE_EQ(Engine.FindDefinedType(u"temp")->GetFuzzyType()->GetFuzzyEqualsThreshold(), 1);
  EXPECT_DOUBLE_EQ(Number(u"(set-activation-threshold -1)"), 0);
  EXPECT_EQ(Eval(u"(set-fuzzy-correlation product)")->GetDType(), dtAtom);
  EXPECT_EQ(Failure(u"(set-fuzzy-correlation maximum)"),
            u"Invalid Fuzzy Correlation specified (maximum), expected minimum, or product");
  EXPECT_EQ(Engine.GetFuzzyCorrelationMethod(), fcmProduct) << "a bad name changes nothing";
  EXPECT_EQ(Failure(u"(set-fuzzy-inference max-min)"),
            u"Invalid Fuzzy Inference specified (max-min), expected min-max, sum, mean, product, or bounded-sum");
  EXPECT_EQ(Failure(u"(get-fuzzy-inference mean)"), u"Too many arguments for get-fuzzy-inference");
}

TEST(TFuzzyFamilyTest, TheKindSetsTheNameAndAKnownNameSetsTheKind) {
  TRef<TGetFuzzyFunction> Function = Make<TGetFuzzyFunction>(gffGetFsX);
  EXPECT_EQ(Function->GetFunctionName(), u"get-fs-x");
  Function->SetType(gffGetFsVariable);
  EXPECT_EQ(Function->GetFunctionName(), u"get-fs-variable");
  EXPECT_EQ(Function->GetMaxArgumentCount(), 1);
  Function->SetFunctionName(u"get-fs-value");
  EXPECT_EQ(Function->GetType(), gffGetFsValue);
  EXPECT_EQ(Function->GetMinArgumentCount(), 2);
  EXPECT_EQ(Function->GetArgumentString(),
            u" <fact-expression> | <fact-id-expression> | <fuzzy-value-expression> <numeric-expression> ");
  Function->SetFunctionName(u"membership");
  EXPECT_EQ(Function->GetType(), gffGetFsValue) << "another name is only a name";
  TRef<TGetFuzzyFunction> Copy = Make<TGetFuzzyFunction>();
  Copy->Assign(Function.Get());
  EXPECT_EQ(Copy->GetType(), gffGetFsValue) << "a copy serves as its source, whatever the name";
  EXPECT_EQ(Copy->GetMinArgumentCount(), 2);
}

TEST(TFuzzyPackageTest, ThePackageComesWithTheFuzzyLogicFlagOnly) {
  TInferenceEngine Engine;
  IUserFunction Function;
  for (const char16_t* Name : {u"create-fuzzy-value", u"fuzzy-assert-unconditional", u"fuzzy-intersection-x",
                               u"get-fs-value", u"get-u-units", u"set-activation-threshold", u"get-fuzzy-inference",
                               u"is-undecidable", u"plot-fuzzy-value", u"z", u"beta"})
    EXPECT_TRUE(Engine.ContainsUserFunction(Name, Function)) << StringToUtf8(Name);
  TFunctionPackages Packages = Engine.GetPackages();
  Packages.Exclude(pFuzzyLogic);
  Engine.SetPackages(Packages);
  EXPECT_FALSE(Engine.ContainsUserFunction(u"tri", Function));
  EXPECT_TRUE(Engine.ContainsUserFunction(u"assert", Function));
}

TEST_F(TFuzzyAssertTest, AnEqualFactIsUnitedOrWhenUnconditionalIntersected) {
  Eval(u"(assert (reading (t cold)))");
  EXPECT_EQ(Eval(u"(fuzzy-assert (reading (t hot)))")->GetAsFactId(), 2) << "the merged fact is a new one";
  EXPECT_DOUBLE_EQ(Reading()->DegreeOfMembership(0) + Reading()->DegreeOfMembership(100), 2);
  Eval(u"(fuzzy-assert-unconditional min-max (reading (t not cold)))");
  IFuzzySet Both = Reading();
  EXPECT_DOUBLE_EQ(Both->DegreeOfMembership(0), 0);
  EXPECT_DOUBLE_EQ(Both->DegreeOfMembership(25), 0.5) << "the smaller of cold and not cold";
  EXPECT_DOUBLE_EQ(Both->DegreeOfMembership(100), 1);
}

TEST_F(TFuzzyAssertTest, TheNamedInferenceServesThisAssertionOnly) {
  // Flat sets show each operation plainly.
  const String Half = u"(reading (t ((0 0.5) (100 0.5))))";
  Eval(u"(assert " + Half + u")");
  Eval(u"(fuzzy-assert product " + Half + u")");
  EXPECT_DOUBLE_EQ(Reading()->DegreeOfMembership(25), 0.75) << "a + b - a b";
  EXPECT_EQ(Engine.GetFuzzyInferenceMethod(), fimMinMax);
  Eval(u"(fuzzy-assert-unconditional product " + Half + u")");
  EXPECT_DOUBLE_EQ(Reading()->DegreeOfMembership(25), 0.375);
  Eval(u"(set-fuzzy-inference bounded-sum)");
  Eval(u"(fuzzy-assert " + Half + u")");
  EXPECT_DOUBLE_EQ(Reading()->DegreeOfMembership(25), 0.875) << "the engine's method";
  EXPECT_NE(Failure(u"(fuzzy-assert sum (reading (t warm)))"), u"(no failure)");
  EXPECT_EQ(Engine.GetFuzzyInferenceMethod(), fimBoundedSum) << "put back after a failure too";
}

TEST_F(TFuzzyAssertTest, EveryFactIsAssertedAndTheLastIdAddedReturned) {
  EXPECT_EQ(Eval(u"(fuzzy-assert sum (note (text a)) (reading (t cold)) (note (text b)))")->GetAsFactId(), 3);
  EXPECT_EQ(Eval(u"(fuzzy-assert (note (text c)) (note (text a)))")->GetAsFactId(), 4) << "a duplicate is refused";
  EXPECT_TRUE(Eval(u"(fuzzy-assert (note (text a)))")->Equals(FCFalse));
  EXPECT_TRUE(Eval(u"(fuzzy-assert mean)")->Equals(FCFalse));
  Engine.GetContext()->SetVariable(u"v", Make<TTavoValue>(Set(u"(tri 10 20 30)")));
  Eval(u"(fuzzy-assert (reading (t ?v)))");
  EXPECT_DOUBLE_EQ(Reading()->DegreeOfMembership(20), 1) << "slots are evaluated in the caller's context";
}

TEST_F(TFuzzyAssertTest, ANameMustBeAnInferenceAndTheUnconditionalFormNeedsOne) {
  const String Expected = u"), expected min-max, sum, mean, product, or bounded-sum";
  EXPECT_EQ(Failure(u"(fuzzy-assert strongest (reading (t hot)))"),
            u"Invalid Fuzzy Inference specified (strongest" + Expected);
  EXPECT_EQ(Failure(u"(fuzzy-assert-unconditional 3 (reading (t hot)))"),
            u"Invalid Fuzzy Inference specified (3" + Expected);
  const String Unnamed = Failure(u"(fuzzy-assert-unconditional (reading (t hot)))");
  EXPECT_EQ(Unnamed.find(u"Invalid Fuzzy Inference specified ((reading "), 0u) << StringToUtf8(Unnamed);
  EXPECT_EQ(Engine.GetFactCount(), 1) << "nothing was asserted";
}

// The lines of a text ended by CR LF.
std::vector<String> Lines(const String& Text) {
  std::vector<String> Result;
  size_t Start = 0;
  for (size_t End; (End = Text.find(u"\r\n", Start)) != String::npos; Start = End + 2)
    Result.push_back(Text.substr(Start, End - Start));
  EXPECT_EQ(Start, Text.size()) << "every line ends in CR LF";
  return Result;
}

TEST_F(TFuzzyPlotTest, OneCharacterServesTwoSetsAndFullMembershipTopsThePlot) {
  Eval(u"(plot-fuzzy-value t \"*\" 0 100 (create-fuzzy-value temp cold) (create-fuzzy-value temp hot))");
  EXPECT_EQ(PrintedTo, u"t");
  const std::vector<String> Text = Lines(Printed);
  ASSERT_EQ(Text.size(), 3u + 21u + 4u);
  EXPECT_EQ(Text[0], u"Fuzzy Variable: temp");
  EXPECT_EQ(Text[1], u"Fuzzy Values: cold(*) hot(*)");
  // Cold is 1 at 0, the first column; hot reaches 0.96 at 98, the last.
  EXPECT_EQ(Text[3], u"1.00*" + String(49, u' '));
  EXPECT_EQ(Text[4], u"0.95 *" + String(47, u' ') + u"*");
  EXPECT_EQ(Text[23], u"0.00" + String(50, u'*'));
  EXPECT_EQ(Text[27], u"Universe of Discourse: From 0.00 to 100.00");
}

TEST_F(TFuzzyPlotTest, LaterSetsOverwriteAndShortCharactersRepeatTheLast) {
  IFuzzySet Rise = Points(u"((0 0) (10 1))");
  IFuzzySet Fall = Points(u"((0 1) (10 0))");
  const std::vector<String> Text = Lines(FuzzyPlotText({Rise, Rise, Fall}, u"ab", -10, 40));
  ASSERT_EQ(Text.size(), 1u + 21u + 4u) << "no variable, no variable lines";
  EXPECT_EQ(Text[0], u"Fuzzy Values: (a) (b) (b)");
  // X runs from -10 by 1: fall is 1 and rise 0 up to 0, the other way round
  // from 10; the second rise drew over the first.
  EXPECT_EQ(Text[2].substr(4), String(11, u'b') + String(9, u' ') + String(30, u'b'));
  EXPECT_EQ(Text[22].substr(4), String(11, u'b') + String(9, u' ') + String(30, u'b'));
  EXPECT_EQ(Text[24], u" -10.00      0.00     10.00     20.00     30.00     40.00");
  EXPECT_EQ(Lines(FuzzyPlotText({Rise}, u"", 0, 10))[0], u"Fuzzy Values: (*)");
  // From a script: facts by their fuzzy slot, and lists member by member.
  Eval(u"(assert (reading (t hot)))");
  Engine.GetContext()->SetVariable(u"both", testvalues::List({Make<TTavoValue>(Rise), Make<TTavoValue>(Fall)}));
  Printed.clear();
  Eval(u"(plot-fuzzy-value t \"+-x\" 0 100 1 ?both)");
  EXPECT_EQ(Lines(Printed)[1], u"Fuzzy Values: hot(+) (-) (x)");
}

}  // namespace
}  // namespace tavo
