#include "fuzzy/FuzzyLogicPackage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

// An engine with every package, a fuzzy type "temp" from 0 to 100 C with
// the terms cold and hot, a template "reading" of one temp slot and a crisp
// template "note", and what it prints kept by stream.
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
        u"(deftype temp extends (type FUZZY) (range 0 100) (units C)"
        u"  (values (term cold ((0 1) (50 0))) (term hot ((50 0) (100 1)))))"
        u"(deftemplate reading (slot t (type temp)))"
        u"(deftemplate note (slot text))");
  }

  ITavoValue Eval(const String& Text) { return Engine.ParseNExecuteFunCall(Text); }
  IFuzzySet Set(const String& Text) { return Eval(Text)->GetAsFuzzy(); }
  double Number(const String& Text) { return Eval(Text)->GetAsNumeric(); }
  // A set from its literal points.
  IFuzzySet Points(const String& Text) { return Engine.ParseValue(Text)->Resolve(nullptr)->GetAsFuzzy(); }
  String Failure(const String& Text) {
    return FailureOf([&] { Eval(Text); });
  }
  // The set of the one reading fact, and its id.
  IFuzzySet Reading(int* Id = nullptr) {
    IFuzzySet Result;
    int Count = 0;
    for (int I = 0; I < Engine.GetFacts()->Count(); ++I) {
      const IFact& Fact = Engine.GetFacts()->Get(I);
      if (Fact->GetTemplate()->GetTemplateName() != u"reading") continue;
      ++Count;
      Result = Fact->GetValue(u"t")->GetAsFuzzy();
      if (Id) *Id = Fact->GetID();
    }
    EXPECT_EQ(Count, 1) << "one reading fact";
    return Result;
  }
};

using TFuzzyShapeTest = TFuzzyFixture;
using TFuzzyValueTest = TFuzzyFixture;
using TFuzzySettingsTest = TFuzzyFixture;
using TFuzzyAssertTest = TFuzzyFixture;
using TFuzzyPlotTest = TFuzzyFixture;

// Shapes

TEST_F(TFuzzyShapeTest, SRisesThroughHalfAtTheMidpointAndZMirrorsIt) {
  IFuzzySet S = Set(u"(s 0 10)");
  IFuzzySet Z = Set(u"(z 0 10)");
  EXPECT_EQ(S->GetCount(), 15) << "seven steps each side of the inflection";
  EXPECT_DOUBLE_EQ(S->GetX(0), 0);
  EXPECT_DOUBLE_EQ(S->GetX(S->GetCount() - 1), 10);
  EXPECT_DOUBLE_EQ(S->DegreeOfMembership(0), 0);
  EXPECT_DOUBLE_EQ(S->DegreeOfMembership(5), 0.5);
  EXPECT_DOUBLE_EQ(S->DegreeOfMembership(10), 1);
  for (double X : {0.0, 1.5, 3.0, 5.0, 6.25, 9.0, 10.0}) {
    EXPECT_NEAR(Z->DegreeOfMembership(X), 1 - S->DegreeOfMembership(X), 1e-12) << X;
    EXPECT_NEAR(Z->DegreeOfMembership(X), S->DegreeOfMembership(10 - X), 1e-12) << X;
  }
  EXPECT_LT(S->DegreeOfMembership(2), 0.25) << "a curve, not a straight line";
  EXPECT_EQ(S->GetVariable(), nullptr);
  EXPECT_EQ(S->GetName(), u"");
  EXPECT_EQ(S->GetParser(), static_cast<IFuzzyParser*>(&Engine));
  EXPECT_NE(dynamic_cast<TTavoFuzzySet*>(S.Get()), nullptr) << "a set that compares with values";
  EXPECT_NE(Failure(u"(s 10 0)"), u"(no failure)") << "an s-curve must ascend";
}

TEST_F(TFuzzyShapeTest, TriangleAndPiTakeTheirPointsInTheirOrder) {
  IFuzzySet Tri = Set(u"(tri 1 2 4)");
  ASSERT_EQ(Tri->GetCount(), 3);
  EXPECT_DOUBLE_EQ(Tri->GetX(0), 1);
  EXPECT_DOUBLE_EQ(Tri->GetY(0), 0);
  EXPECT_DOUBLE_EQ(Tri->GetX(1), 2);
  EXPECT_DOUBLE_EQ(Tri->GetY(1), 1);
  EXPECT_DOUBLE_EQ(Tri->GetX(2), 4);
  EXPECT_DOUBLE_EQ(Tri->GetY(2), 0);

  // Center and range; left, center and right.
  IFuzzySet Around = Set(u"(pi 50 10)");
  EXPECT_DOUBLE_EQ(Around->GetX(0), 40);
  EXPECT_DOUBLE_EQ(Around->GetX(Around->GetCount() - 1), 60);
  EXPECT_DOUBLE_EQ(Around->DegreeOfMembership(50), 1);
  EXPECT_DOUBLE_EQ(Around->DegreeOfMembership(45), 0.5);
  EXPECT_TRUE(Around->SamePoints(*Set(u"(pi 40 50 60)"), 1e-12));
  IFuzzySet Lopsided = Set(u"(pi 40 50 70)");
  EXPECT_DOUBLE_EQ(Lopsided->DegreeOfMembership(50), 1);
  EXPECT_DOUBLE_EQ(Lopsided->DegreeOfMembership(45), 0.5);
  EXPECT_DOUBLE_EQ(Lopsided->DegreeOfMembership(60), 0.5);
  EXPECT_DOUBLE_EQ(Lopsided->DegreeOfMembership(70), 0);
}

TEST_F(TFuzzyShapeTest, BetaWithoutAnInflectionTakesItMidwayBetweenCenterAndRange) {
  IFuzzySet Two = Set(u"(beta 50 20)");
  EXPECT_TRUE(Two->SamePoints(*Set(u"(beta 50 20 35)"), 1e-12));
  EXPECT_DOUBLE_EQ(Two->GetX(0), 30);
  EXPECT_DOUBLE_EQ(Two->GetX(Two->GetCount() - 1), 70);
  EXPECT_DOUBLE_EQ(Two->DegreeOfMembership(50), 1);
  EXPECT_NEAR(Two->DegreeOfMembership(70), 1 / (1 + std::pow(20.0 / 35.0, 2)), 1e-12);
  // The weight scales the distance from the center, measured in inflections.
  IFuzzySet Weighed = Set(u"(beta 50 20 10 3)");
  EXPECT_EQ(Weighed->GetCount(), 15);
  for (int I = 0; I < Weighed->GetCount(); ++I) {
    const double D = (Weighed->GetX(I) - 50) / 10;
    EXPECT_NEAR(Weighed->GetY(I), 1 / (1 + 3 * D * D), 1e-12) << I;
  }
}

TEST_F(TFuzzyShapeTest, ShapesTakeOnlyTheirNumbersOfArguments) {
  EXPECT_EQ(Failure(u"(tri 1 2)"), u"Too few arguments for tri");
  EXPECT_EQ(Failure(u"(tri 1 2 3 4)"), u"Too many arguments for tri");
  EXPECT_EQ(Failure(u"(s 1 2 3)"), u"Too many arguments for s");
  EXPECT_EQ(Failure(u"(z 1)"), u"Too few arguments for z");
  EXPECT_EQ(Failure(u"(pi 1 2 3 4)"), u"Too many arguments for pi");
  EXPECT_EQ(Failure(u"(beta 1)"), u"Too few arguments for beta");
  EXPECT_EQ(Failure(u"(beta 1 2 3 4 5)"), u"Too many arguments for beta");
}

TEST_F(TFuzzyShapeTest, AShapeMakesATermOfAFuzzyType) {
  Engine.Parse(u"(deftype level extends (type FUZZY) (range 0 10)"
               u"  (values (term mid (tri 2 5 8)) (term top (s 6 10))))");
  const IFuzzyVariable& Level = Engine.FindDefinedType(u"level")->GetFuzzyType();
  TIFuzzySet* Mid = Level->FindFuzzySet(u"mid");
  ASSERT_NE(Mid, nullptr);
  EXPECT_DOUBLE_EQ(Mid->DegreeOfMembership(5), 1);
  EXPECT_DOUBLE_EQ(Mid->DegreeOfMembership(3.5), 0.5);
  EXPECT_EQ(Mid->GetVariable(), Level.Get());
  ASSERT_NE(Level->FindFuzzySet(u"top"), nullptr);
  EXPECT_DOUBLE_EQ(Level->FindFuzzySet(u"top")->DegreeOfMembership(8), 0.5);
}

// Fuzzy values: create-fuzzy-value, get-fs, get-u, union and intersection

TEST_F(TFuzzyValueTest, CreateFuzzyValueReadsAnExpressionOverTheTypesTerms) {
  IFuzzySet VeryHot = Set(u"(create-fuzzy-value temp very hot)");
  EXPECT_DOUBLE_EQ(VeryHot->DegreeOfMembership(75), 0.25);
  ASSERT_NE(VeryHot->GetVariable(), nullptr);
  EXPECT_EQ(VeryHot->GetVariable()->GetName(), u"temp");
  // A fuzzy value names its variable as well as the type does.
  IFuzzySet Either = Set(u"(create-fuzzy-value (create-fuzzy-value temp hot) cold or hot)");
  EXPECT_DOUBLE_EQ(Either->DegreeOfMembership(0), 1);
  EXPECT_DOUBLE_EQ(Either->DegreeOfMembership(100), 1);
  // A shape joins the variable; the term it came from is left alone.
  EXPECT_EQ(Eval(u"(get-fs-variable (create-fuzzy-value temp (tri 10 20 30)))")->GetAsString(), u"temp");
  EXPECT_EQ(Eval(u"(get-fs-variable (create-fuzzy-value \"temp\" ((10 0) (20 1))))")->GetAsString(), u"temp");

  EXPECT_EQ(Failure(u"(create-fuzzy-value nothing hot)"), u"type name unknown or invalid: nothing");
  EXPECT_EQ(Failure(u"(create-fuzzy-value 3 hot)"),
            u"Invalid argument type for deffunction: \"dtInteger\".  Expected dtAtom, dtString, dtFuzzy");
  EXPECT_EQ(Failure(u"(create-fuzzy-value (tri 1 2 3) hot)"), u"fuzzy variable is not defined");
  EXPECT_EQ(Failure(u"(create-fuzzy-value temp warm)"), u"Invalid Fuzzy Expression: warm");
}

TEST_F(TFuzzyValueTest, GetFsReadsAValueAFactOrAFactId) {
  ASSERT_EQ(Eval(u"(assert (reading (t cold)))")->GetAsInteger(), 1);
  const ITavoValue Points = Eval(u"(get-fs (tri 1 2 3))");
  ASSERT_EQ(Points->GetDType(), dtSingletons);
  const ISingletonsVector& Pairs = Points->GetAsSingletons();
  ASSERT_EQ(Pairs->GetCount(), 3);
  EXPECT_EQ(Pairs->GetXValues(1)->GetDType(), dtFloat);
  EXPECT_DOUBLE_EQ(Pairs->GetXValues(1)->GetAsNumeric(), 2);
  EXPECT_DOUBLE_EQ(Pairs->GetYValues(1)->GetAsNumeric(), 1);
  // Read back as points, they make the same set.
  EXPECT_TRUE(Points->Resolve(nullptr)->GetAsFuzzy()->SamePoints(*Set(u"(tri 1 2 3)"), 1e-12));

  // The same fact by an integer, by a fact value and by a fact id.
  Engine.GetContext()->SetVariable(u"f", Make<TTavoValue>(Engine.GetFacts()->GetFactByID(1)));
  for (const String Source : {u"1", u"?f"}) {
    EXPECT_EQ(Eval(u"(get-fs-length " + Source + u")")->GetAsInteger(), 2) << StringToUtf8(Source);
    EXPECT_DOUBLE_EQ(Number(u"(get-fs-x " + Source + u" 1)"), 50) << StringToUtf8(Source);
    EXPECT_DOUBLE_EQ(Number(u"(get-fs-y " + Source + u" 0)"), 1) << StringToUtf8(Source);
    EXPECT_DOUBLE_EQ(Number(u"(get-fs-value " + Source + u" 25)"), 0.5) << StringToUtf8(Source);
    EXPECT_EQ(Eval(u"(get-fs-variable " + Source + u")")->GetAsString(), u"temp") << StringToUtf8(Source);
  }
  const ITavoValue Id = Make<TTavoValue>(1, dtFactId);
  EXPECT_DOUBLE_EQ(GetFuzzySetFromValue(Engine, Id, Engine.GetContext())->DegreeOfMembership(25), 0.5);
  EXPECT_TRUE(Eval(u"(get-fs-variable (s 1 2))")->Equals(FCNil));
  EXPECT_EQ(Eval(u"(get-fs-x (s 1 2) 1)")->GetDType(), dtFloat);
}

TEST_F(TFuzzyValueTest, GetFsFailsForWhatHoldsNoFuzzySet) {
  Eval(u"(assert (note (text hello)))");
  EXPECT_EQ(Failure(u"(get-fs 99)"), u"No Such Fact with ID=99 exists");
  EXPECT_EQ(Failure(u"(get-fs 1)"), u"Fact is not a fuzzy fact");
  EXPECT_EQ(Failure(u"(get-fs-x (tri 1 2 3) 3)"), u"List index out of bounds (3)");
  EXPECT_EQ(Failure(u"(get-fs-y (tri 1 2 3) -1)"), u"List index out of bounds (-1)");
  EXPECT_EQ(Failure(u"(get-fs \"text\")"), u"Not a fuzzy value type.  Value (\"text\") is a dtString type");
  EXPECT_EQ(Failure(u"(get-fs-value (tri 1 2 3))"), u"Too few arguments for get-fs-value");
}

TEST_F(TFuzzyValueTest, TheFuzzySlotOfAFactIsItsFirstWithNumbersAndListsReadAsSets) {
  Engine.Parse(u"(deftemplate pair (slot label) (slot low (type temp)) (slot zhigh (type temp)))");
  IFact Fact = Engine.FindFactTemplate(u"pair")->NewFact();
  const ISlotLayout& Layout = Fact->GetTemplate()->GetLayout();
  const int Low = Layout->IndexOf(u"low");
  Fact->StoreValueAt(Layout->IndexOf(u"zhigh"), Make<TTavoValue>(IFuzzySet(Engine.FindDefinedType(u"temp")->GetFuzzyType()->FindFuzzySet(u"hot"))));
  // A number stands for the set true at that number alone.
  Fact->StoreValueAt(Low, Make<TTavoValue>(30, dtInteger));
  IFuzzySet Crisp = GetFuzzySlot(Fact);
  ASSERT_TRUE(Crisp);
  EXPECT_DOUBLE_EQ(Crisp->DegreeOfMembership(30), 1);
  EXPECT_DOUBLE_EQ(Crisp->DegreeOfMembership(31), 0);
  // A list gives its first member.
  Fact->StoreValueAt(Low, testvalues::List({Make<TTavoValue>(Set(u"(tri 0 10 20)")), Make<TTavoValue>(Set(u"(s 1 2)"))}));
  EXPECT_DOUBLE_EQ(GetFuzzySlot(Fact)->DegreeOfMembership(10), 1);
  EXPECT_FALSE(GetFuzzySlot(Engine.FindFactTemplate(u"note")->NewFact()));
}

TEST_F(TFuzzyValueTest, GetUGivesTheUniverseOfATypeAValueOrAFact) {
  Engine.Parse(u"(deftype weight extends (type FUZZY) (range 0 100) (units kg))"
               u"(deftype plain extends (type INTEGER))");
  EXPECT_EQ(Eval(u"(get-u weight)")->GetAsString(), u"0.0000 - 100.0000 kg");
  EXPECT_EQ(Eval(u"(get-u weight)")->GetDType(), dtString);
  EXPECT_EQ(Eval(u"(get-u-units \"weight\")")->GetAsString(), u"kg");
  Engine.Parse(u"(deftype shifted extends (type FUZZY) (range -5 2.5))");
  EXPECT_DOUBLE_EQ(Number(u"(get-u-from shifted)"), -5);
  EXPECT_DOUBLE_EQ(Number(u"(get-u-to shifted)"), 2.5);
  EXPECT_EQ(Eval(u"(get-u-to shifted)")->GetDType(), dtFloat);

  Eval(u"(assert (reading (t hot)))");
  EXPECT_EQ(Eval(u"(get-u 1)")->GetAsString(), u"0.0000 - 100.0000 C");
  EXPECT_EQ(Eval(u"(get-u (create-fuzzy-value temp cold))")->GetAsString(), u"0.0000 - 100.0000 C");
  Engine.GetContext()->SetVariable(u"f", Make<TTavoValue>(Engine.GetFacts()->GetFactByID(1)));
  EXPECT_EQ(Eval(u"(get-u-units ?f)")->GetAsString(), u"C");

  EXPECT_EQ(Failure(u"(get-u 1.5)"), u"Invalid argument type for deffunction: \"dtFloat\".  Expected dtAtom, "
                                     u"dtString, dtInteger, dtFactId, dtFact, dtFuzzy");
  EXPECT_EQ(Failure(u"(get-u plain)"), u"type name unknown or invalid: plain");
  EXPECT_EQ(Failure(u"(get-u (tri 1 2 3))"), u"fuzzy variable is not defined");
  EXPECT_EQ(Failure(u"(get-u 7)"), u"No Such Fact with ID=7 exists");
  Eval(u"(assert (note (text x)))");
  EXPECT_EQ(Failure(u"(get-u 2)"), u"Fact is not a fuzzy fact");
}

TEST_F(TFuzzyValueTest, UnionAndIntersectionCombineEveryArgumentAndLeaveTheFirstAlone) {
  IFuzzySet Cold = Set(u"(create-fuzzy-value temp cold)");
  IFuzzySet Either = Set(u"(fuzzy-union (create-fuzzy-value temp cold) (create-fuzzy-value temp hot))");
  EXPECT_DOUBLE_EQ(Either->DegreeOfMembership(0), 1);
  EXPECT_DOUBLE_EQ(Either->DegreeOfMembership(50), 0);
  EXPECT_DOUBLE_EQ(Either->DegreeOfMembership(100), 1);
  EXPECT_DOUBLE_EQ(Cold->DegreeOfMembership(100), 0) << "the term itself is unchanged";

  IFuzzySet Three = Set(u"(fuzzy-intersection (tri 0 50 100) (tri 25 50 75) (s 40 60))");
  EXPECT_DOUBLE_EQ(Three->DegreeOfMembership(50), 0.5);
  EXPECT_DOUBLE_EQ(Three->DegreeOfMembership(30), 0);
  // The -x forms name their operation.
  const String Flat = u" ((0 0.5) (100 0.5)) ((0 0.6) (100 0.6)))";
  EXPECT_DOUBLE_EQ(Set(u"(fuzzy-intersection-x product" + Flat)->DegreeOfMembership(30), 0.3);
  EXPECT_DOUBLE_EQ(Set(u"(fuzzy-intersection-x zadeh" + Flat)->DegreeOfMembership(30), 0.5);
  EXPECT_DOUBLE_EQ(Set(u"(fuzzy-union-x bounded-sum" + Flat)->DegreeOfMembership(30), 1);
  EXPECT_DOUBLE_EQ(Set(u"(fuzzy-union-x mean-sqr" + Flat)->DegreeOfMembership(30), (0.25 + 0.36) / 2);
  // A fact counts by its fuzzy slot.
  Eval(u"(assert (reading (t hot)))");
  EXPECT_DOUBLE_EQ(Set(u"(fuzzy-union 1 (create-fuzzy-value temp cold))")->DegreeOfMembership(0), 1);

  EXPECT_EQ(Failure(u"(fuzzy-union-x maximum (tri 0 1 2) (tri 1 2 3))"),
            u"Invalid Fuzzy operation specified (maximum) for fuzzy-union-x, expected zadeh, mean, mean-sqr, "
            u"mean-sqrt, product, bounded-sum, or sum");
  EXPECT_EQ(Failure(u"(fuzzy-intersection-x sum-of (tri 0 1 2) (tri 1 2 3))"),
            u"Invalid Fuzzy operation specified (sum-of) for fuzzy-intersection-x, expected zadeh, mean, "
            u"mean-sqr, mean-sqrt, product, bounded-sum, or sum");
  EXPECT_EQ(Failure(u"(fuzzy-union (tri 0 1 2))"), u"Too few arguments for fuzzy-union");
  EXPECT_EQ(Failure(u"(fuzzy-union-x zadeh (tri 0 1 2))"), u"Too few arguments for fuzzy-union-x");
}

TEST_F(TFuzzyValueTest, DefuzzificationReadsTheCentreTheMaximaAndTheHeight) {
  EXPECT_DOUBLE_EQ(Number(u"(moment-defuzzify (tri 0 3 6))"), 3);
  EXPECT_DOUBLE_EQ(Number(u"(moment-defuzzify ((0 0) (10 1)))"), 20.0 / 3);
  EXPECT_DOUBLE_EQ(Number(u"(maximum-defuzzify ((0 1) (4 1) (10 0)))"), 2);
  EXPECT_DOUBLE_EQ(Number(u"(get-compatibility-index ((0 0) (5 0.4) (10 0)))"), 0.4);
  EXPECT_TRUE(Eval(u"(is-undecidable ((0 0) (10 0)))")->Equals(FCTrue)) << "no area";
  EXPECT_TRUE(Eval(u"(is-undecidable (tri 0 1 2))")->Equals(FCFalse)) << "a fresh set that has an area";
  Eval(u"(assert (reading (t cold)))");
  EXPECT_DOUBLE_EQ(Number(u"(moment-defuzzify 1)"), 50.0 / 3);
}

// Settings

TEST_F(TFuzzySettingsTest, EachSetterReturnsTheSettingItReplaced) {
  EXPECT_TRUE(Eval(u"(set-fuzzy-auto-terms FALSE)")->Equals(FCTrue));
  EXPECT_TRUE(Eval(u"(get-fuzzy-auto-terms)")->Equals(FCFalse));
  EXPECT_FALSE(Engine.GetFuzzyAutoTerms());
  Engine.Parse(u"(deftype bare extends (type FUZZY) (range 0 10))");
  EXPECT_EQ(Engine.FindDefinedType(u"bare")->GetFuzzyType()->GetFuzzySetCount(), 0) << "no default terms";
  EXPECT_TRUE(Eval(u"(set-fuzzy-auto-terms TRUE)")->Equals(FCFalse));

  const double Threshold = Engine.GetFuzzyEqualsThreshold();
  EXPECT_DOUBLE_EQ(Number(u"(set-fuzzy-threshold 0.25)"), Threshold);
  EXPECT_DOUBLE_EQ(Number(u"(get-fuzzy-threshold)"), 0.25);
  EXPECT_DOUBLE_EQ(Engine.FindDefinedType(u"temp")->GetFuzzyType()->GetFuzzyEqualsThreshold(), 0.25);
  EXPECT_DOUBLE_EQ(Number(u"(set-fuzzy-threshold 3)"), 0.25);
  EXPECT_DOUBLE_EQ(Number(u"(get-fuzzy-threshold)"), 1) << "held between 0 and 1";

  EXPECT_DOUBLE_EQ(Number(u"(set-activation-threshold 0.5)"), 0);
  EXPECT_DOUBLE_EQ(Number(u"(set-activation-threshold -1)"), 0.5);
  EXPECT_DOUBLE_EQ(Number(u"(get-activation-threshold)"), 0);

  const ITavoValue Correlation = Eval(u"(set-fuzzy-correlation product)");
  EXPECT_EQ(Correlation->GetDType(), dtAtom);
  EXPECT_EQ(Correlation->GetAsString(), u"minimum");
  EXPECT_EQ(Engine.GetFuzzyCorrelationMethod(), fcmProduct);
  EXPECT_EQ(Eval(u"(get-fuzzy-correlation)")->GetAsString(), u"product");
  EXPECT_EQ(Failure(u"(set-fuzzy-correlation maximum)"),
            u"Invalid Fuzzy Correlation specified (maximum), expected minimum, or product");
  EXPECT_EQ(Engine.GetFuzzyCorrelationMethod(), fcmProduct) << "a bad name changes nothing";

  EXPECT_EQ(Eval(u"(set-fuzzy-inference bounded-sum)")->GetAsString(), u"min-max");
  EXPECT_EQ(Eval(u"(set-fuzzy-inference mean)")->GetAsString(), u"bounded-sum");
  EXPECT_EQ(Eval(u"(get-fuzzy-inference)")->GetAsString(), u"mean");
  EXPECT_EQ(Failure(u"(set-fuzzy-inference max-min)"),
            u"Invalid Fuzzy Inference specified (max-min), expected min-max, sum, mean, product, or bounded-sum");
  EXPECT_EQ(Failure(u"(get-fuzzy-inference mean)"), u"Too many arguments for get-fuzzy-inference");
  EXPECT_EQ(Failure(u"(set-fuzzy-inference)"), u"Too few arguments for set-fuzzy-inference");
}

// A family's kind and name go together.
TEST(TFuzzyFamilyTest, TheKindSetsTheNameAndAKnownNameSetsTheKind) {
  TRef<TGetFuzzyFunction> Function = Make<TGetFuzzyFunction>(gffGetFsX);
  EXPECT_EQ(Function->GetFunctionName(), u"get-fs-x");
  EXPECT_EQ(Function->GetMinArgumentCount(), 2);
  Function->SetType(gffGetFsVariable);
  EXPECT_EQ(Function->GetFunctionName(), u"get-fs-variable");
  EXPECT_EQ(Function->GetMaxArgumentCount(), 1);
  EXPECT_EQ(Function->GetComment(), u"Returns the name of the fuzzy variable of the fuzzy set, or nil when it has none");
  Function->SetFunctionName(u"get-fs-value");
  EXPECT_EQ(Function->GetType(), gffGetFsValue);
  EXPECT_EQ(Function->GetMinArgumentCount(), 2);
  EXPECT_EQ(Function->GetArgumentString(),
            u" <fact-expression> | <fact-id-expression> | <fuzzy-value-expression> <numeric-expression> ");
  // Another name is only a name.
  Function->SetFunctionName(u"membership");
  EXPECT_EQ(Function->GetType(), gffGetFsValue);
  EXPECT_EQ(Function->GetFunctionName(), u"membership");
  // A copy serves as its source does, whatever the name.
  TRef<TGetFuzzyFunction> Copy = Make<TGetFuzzyFunction>();
  Copy->Assign(Function.Get());
  EXPECT_EQ(Copy->GetType(), gffGetFsValue);
  EXPECT_EQ(Copy->GetFunctionName(), u"membership");
  EXPECT_EQ(Copy->GetMinArgumentCount(), 2);

  TRef<TCreateFuzzyShapeFunction> Shape = Make<TCreateFuzzyShapeFunction>();
  EXPECT_EQ(Shape->GetFunctionName(), u"s");
  Shape->SetFunctionName(u"beta");
  EXPECT_EQ(Shape->GetType(), fsBetaShape);
  EXPECT_EQ(Shape->GetMaxArgumentCount(), 4);
}

TEST(TFuzzyPackageTest, ThePackageComesWithTheFuzzyLogicFlagOnly) {
  TInferenceEngine Engine;
  IUserFunction Function;
  for (const char16_t* Name :
       {u"create-fuzzy-value", u"fuzzy-assert", u"fuzzy-assert-unconditional", u"fuzzy-union", u"fuzzy-union-x",
        u"fuzzy-intersection", u"fuzzy-intersection-x", u"get-fs", u"get-fs-length", u"get-fs-x", u"get-fs-y",
        u"get-fs-variable", u"get-fs-value", u"get-u", u"get-u-from", u"get-u-to", u"get-u-units",
        u"get-fuzzy-auto-terms", u"set-fuzzy-auto-terms", u"get-fuzzy-threshold", u"set-fuzzy-threshold",
        u"get-activation-threshold", u"set-activation-threshold", u"get-fuzzy-correlation",
        u"set-fuzzy-correlation", u"get-fuzzy-inference", u"set-fuzzy-inference", u"moment-defuzzify",
        u"maximum-defuzzify", u"is-undecidable", u"get-compatibility-index", u"plot-fuzzy-value", u"s", u"z", u"pi",
        u"tri", u"beta"})
    EXPECT_TRUE(Engine.ContainsUserFunction(Name, Function)) << StringToUtf8(Name);
  TFunctionPackages Packages = Engine.GetPackages();
  Packages.Exclude(pFuzzyLogic);
  Engine.SetPackages(Packages);
  EXPECT_FALSE(Engine.ContainsUserFunction(u"tri", Function));
  EXPECT_TRUE(Engine.ContainsUserFunction(u"assert", Function));
}

// fuzzy-assert

TEST_F(TFuzzyAssertTest, AnEqualFuzzyFactIsUnitedIntoTheNewOne) {
  Eval(u"(assert (reading (t cold)))");
  const ITavoValue Id = Eval(u"(fuzzy-assert (reading (t hot)))");
  ASSERT_EQ(Id->GetDType(), dtFactId);
  int ReadingId = -1;
  IFuzzySet Merged = Reading(&ReadingId);
  EXPECT_EQ(Id->GetAsInteger(), ReadingId);
  EXPECT_EQ(ReadingId, 2) << "the merged fact is a new one";
  EXPECT_DOUBLE_EQ(Merged->DegreeOfMembership(0), 1);
  EXPECT_DOUBLE_EQ(Merged->DegreeOfMembership(100), 1);
  EXPECT_DOUBLE_EQ(Merged->DegreeOfMembership(50), 0);
}

TEST_F(TFuzzyAssertTest, TheUnconditionalFormIntersects) {
  Eval(u"(assert (reading (t hot)))");
  Eval(u"(fuzzy-assert-unconditional min-max (reading (t not hot)))");
  IFuzzySet Merged = Reading();
  EXPECT_DOUBLE_EQ(Merged->DegreeOfMembership(62.5), 0.25) << "the smaller of hot and not hot";
  EXPECT_DOUBLE_EQ(Merged->DegreeOfMembership(75), 0.5);
  EXPECT_DOUBLE_EQ(Merged->DegreeOfMembership(100), 0);
  EXPECT_DOUBLE_EQ(Merged->GetCompatibilityIndex(), 0.5);
}

TEST_F(TFuzzyAssertTest, TheNamedInferenceServesThisAssertionOnly) {
  // Sets of one membership everywhere, so that each operation shows plainly.
  Eval(u"(assert (reading (t ((0 0.5) (100 0.5)))))");
  Eval(u"(fuzzy-assert product (reading (t ((0 0.5) (100 0.5)))))");
  // The product's union: a + b - a b.
  EXPECT_DOUBLE_EQ(Reading()->DegreeOfMembership(25), 0.75);
  EXPECT_EQ(Engine.GetFuzzyInferenceMethod(), fimMinMax);
  Eval(u"(fuzzy-assert-unconditional product (reading (t ((0 0.5) (100 0.5)))))");
  EXPECT_DOUBLE_EQ(Reading()->DegreeOfMembership(25), 0.75 * 0.5);
  // Without a name, the engine's method.
  Eval(u"(set-fuzzy-inference bounded-sum)");
  Eval(u"(fuzzy-assert (reading (t ((0 0.5) (100 0.5)))))");
  EXPECT_DOUBLE_EQ(Reading()->DegreeOfMembership(25), 0.875);
  // A failed assertion puts the method back too.
  EXPECT_NE(Failure(u"(fuzzy-assert sum (reading (t warm)))"), u"(no failure)");
  EXPECT_EQ(Engine.GetFuzzyInferenceMethod(), fimBoundedSum);
}

TEST_F(TFuzzyAssertTest, EveryFactIsAssertedAndTheLastIdReturned) {
  const ITavoValue Id = Eval(u"(fuzzy-assert sum (note (text a)) (reading (t cold)) (note (text b)))");
  EXPECT_EQ(Id->GetAsInteger(), 3);
  EXPECT_EQ(Engine.GetFactCount(), 4);
  // A crisp duplicate is refused; the id is that of the last one added.
  EXPECT_EQ(Eval(u"(fuzzy-assert (note (text c)) (note (text a)))")->GetAsInteger(), 4);
  EXPECT_TRUE(Eval(u"(fuzzy-assert (note (text a)))")->Equals(FCFalse));
  EXPECT_TRUE(Eval(u"(fuzzy-assert mean)")->Equals(FCFalse)) << "a name and no fact";
  // The slots are evaluated in the caller's context.
  Engine.GetContext()->SetVariable(u"v", Make<TTavoValue>(Set(u"(tri 10 20 30)")));
  Eval(u"(fuzzy-assert (reading (t ?v)))");
  EXPECT_DOUBLE_EQ(Reading()->DegreeOfMembership(20), 1);
}

TEST_F(TFuzzyAssertTest, ANameMustBeAnInferenceAndTheUnconditionalFormNeedsOne) {
  const String Expected = u"expected min-max, sum, mean, product, or bounded-sum";
  EXPECT_EQ(Failure(u"(fuzzy-assert strongest (reading (t hot)))"),
            u"Invalid Fuzzy Inference specified (strongest), " + Expected);
  const String Unnamed = Failure(u"(fuzzy-assert-unconditional (reading (t hot)))");
  EXPECT_EQ(Unnamed.find(u"Invalid Fuzzy Inference specified ("), 0u) << StringToUtf8(Unnamed);
  EXPECT_NE(Unnamed.find(u"reading"), String::npos) << "names what it was given";
  EXPECT_EQ(Unnamed.substr(Unnamed.size() - Expected.size()), Expected);
  EXPECT_EQ(Engine.GetFactCount(), 1) << "nothing was asserted";
}

TEST_F(TFuzzyAssertTest, ARuleAssertsThroughItsStrength) {
  Engine.Parse(u"(deftemplate alarm (slot level (type temp)))"
               u"(defrule warn (reading (t hot)) => (fuzzy-assert (alarm (level hot))))");
  Eval(u"(assert (reading (t 75)))");
  EXPECT_EQ(Engine.Run(), 1);
  for (int I = 0; I < Engine.GetFacts()->Count(); ++I) {
    const IFact& Fact = Engine.GetFacts()->Get(I);
    if (Fact->GetTemplate()->GetTemplateName() == u"alarm") {
      EXPECT_DOUBLE_EQ(Fact->GetValue(u"level")->GetAsFuzzy()->GetCompatibilityIndex(), 0.5)
          << "hot cut at the membership of 75 in hot";
    }
  }
  EXPECT_DOUBLE_EQ(Number(u"(get-compatibility-index 2)"), 0.5);
}

// Plots

// The lines of a text ended by CR LF.
std::vector<String> Lines(const String& Text) {
  std::vector<String> Result;
  size_t Start = 0;
  for (size_t End; (End = Text.find(u"\r\n", Start)) != String::npos; Start = End + 2)
    Result.push_back(Text.substr(Start, End - Start));
  EXPECT_EQ(Start, Text.size()) << "every line ends in CR LF";
  return Result;
}

TEST_F(TFuzzyPlotTest, APlotDrawsEachSetByMembershipOverTheColumns) {
  Eval(u"(plot-fuzzy-value t \"*\" 0 100 (create-fuzzy-value temp cold) (create-fuzzy-value temp hot))");
  EXPECT_EQ(PrintedTo, u"t");
  const std::vector<String> Text = Lines(Printed);
  ASSERT_EQ(Text.size(), 3u + 21u + 4u);
  EXPECT_EQ(Text[0], u"Fuzzy Variable: temp");
  EXPECT_EQ(Text[1], u"Fuzzy Values: cold(*) hot(*)") << "one character serves both";
  EXPECT_EQ(Text[2], u"");
  // Row 20 down to row 0, each a label of four characters and 50 columns.
  for (int Row = 0; Row <= 20; ++Row) EXPECT_EQ(Text[size_t(3 + Row)].size(), 54u) << Row;
  // Cold is 1 at 0 only; hot reaches 0.96 at 98, the last column.
  EXPECT_EQ(Text[3], u"1.00*" + String(49, u' '));
  EXPECT_EQ(Text[4], u"0.95 *" + String(47, u' ') + u"*");
  EXPECT_EQ(Text[13], u"0.50" + String(12, u' ') + u"**" + String(23, u' ') + u"**" + String(11, u' '));
  EXPECT_EQ(Text[23], u"0.00" + String(50, u'*')) << "cold is 0 from 50 on, hot up to 50";
  EXPECT_EQ(Text[24], u"    |----|----|----|----|----|----|----|----|----|----|");
  EXPECT_EQ(Text[25], u"   0.00     20.00     40.00     60.00     80.00    100.00");
  EXPECT_EQ(Text[26], u"");
  EXPECT_EQ(Text[27], u"Universe of Discourse: From 0.00 to 100.00");
}

TEST_F(TFuzzyPlotTest, LaterSetsOverwriteAndShortCharactersRepeatTheLast) {
  IFuzzySet Rise = Points(u"((0 0) (10 1))");
  IFuzzySet Fall = Points(u"((0 1) (10 0))");
  const std::vector<String> Text = Lines(FuzzyPlotText({Rise, Rise, Fall}, u"ab", -10, 40));
  ASSERT_EQ(Text.size(), 1u + 21u + 4u) << "no variable: no variable line and no universe line";
  EXPECT_EQ(Text[0], u"Fuzzy Values: (a) (b) (b)");
  // X runs from -10 by 1: left of 0 fall is 1 and rise 0, from 10 on the
  // other way round; the second rise drew over the first.
  EXPECT_EQ(Text[2].substr(4), String(11, u'b') + String(9, u' ') + String(30, u'b'));
  EXPECT_EQ(Text[22].substr(4), String(11, u'b') + String(9, u' ') + String(30, u'b'));
  EXPECT_EQ(Text[2].find(u'a'), String::npos);
  EXPECT_EQ(Text[24], u" -10.00      0.00     10.00     20.00     30.00     40.00");
  // An empty text draws with a star.
  EXPECT_EQ(Lines(FuzzyPlotText({Rise}, u"", 0, 10))[0], u"Fuzzy Values: (*)");
}

TEST_F(TFuzzyPlotTest, APlotGoesToTheNamedStreamAndReadsFactsAndLists) {
  Eval(u"(assert (reading (t hot)))");
  Engine.GetContext()->SetVariable(u"both", testvalues::List({Make<TTavoValue>(Set(u"(tri 0 50 100)")),
                                                              Make<TTavoValue>(Set(u"(s 0 100)"))}));
  Printed.clear();
  Eval(u"(plot-fuzzy-value t \"+-x\" 0 100 1 ?both)");
  EXPECT_EQ(Lines(Printed)[1], u"Fuzzy Values: hot(+) (-) (x)");
  EXPECT_EQ(Failure(u"(plot-fuzzy-value t \"*\" 0 100)"), u"Too few arguments for plot-fuzzy-value");
}

}  // namespace
}  // namespace tavo
