// The engine's fuzzy operations through the host's interface: fuzzy
// expressions, default terms, correlation, and the combining of fuzzy
// facts on assert.
#include <gtest/gtest.h>

#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

struct TFuzzyLogicTest : testing::Test {
  TFuzzyLogicTest() {
    Engine.Parse(
        u"(deftype temp extends (type FUZZY) (range 0 100) (units C)"
        u"  (values (term cold ((0 1) (50 0))) (term hot ((50 0) (100 1)))))"
        u"(deftemplate reading (slot place) (slot t (type temp)))");
    Variable = Engine.FindDefinedType(u"temp")->GetFuzzyType();
  }
  // The membership at X of the set an expression gives.
  double At(const String& Expression, double X) {
    ITavoValue Value = Engine.EvalFuzzyExpression(Variable, Expression, nullptr);
    EXPECT_EQ(Value->GetDType(), dtFuzzy) << StringToUtf8(Expression);
    return Value->GetAsFuzzy()->DegreeOfMembership(X);
  }
  // The first fact of the template, with its fuzzy slot's set.
  IFuzzySet SetOf(int Id) { return Engine.GetFacts()->GetFactByID(Id)->GetValue(u"t")->GetAsFuzzy(); }

  TInferenceEngine Engine;
  IFuzzyVariable Variable;
};

TEST_F(TFuzzyLogicTest, ExpressionsBindHedgesTightestThenAndThenOr) {
  EXPECT_DOUBLE_EQ(At(u"hot", 75), 0.5);
  EXPECT_DOUBLE_EQ(At(u"very hot", 75), 0.25);
  EXPECT_DOUBLE_EQ(At(u"not very hot", 75), 0.75) << "hedges apply from the innermost";
  EXPECT_DOUBLE_EQ(At(u"hot cut 0.3", 90), 0.3);
  EXPECT_DOUBLE_EQ(At(u"cold or hot", 90), 0.8);
  EXPECT_DOUBLE_EQ(At(u"cold and hot", 50), 0.0);
  // "and" binds more tightly than "or"; brackets group.
  EXPECT_DOUBLE_EQ(At(u"cold or hot and cold", 90), 0.0);
  EXPECT_DOUBLE_EQ(At(u"[cold or hot] and hot", 90), 0.8);
  // A curved hedge follows its curve within a hundredth.
  EXPECT_NEAR(At(u"very [cold or hot]", 90), 0.64, 0.01);
  // A crisp number is a set true at that number alone.
  EXPECT_DOUBLE_EQ(At(u"40", 40), 1.0);
  EXPECT_DOUBLE_EQ(At(u"40", 45), 0.0);
  // The shared term was not touched by any hedge.
  EXPECT_DOUBLE_EQ(At(u"hot", 75), 0.5);
}

TEST_F(TFuzzyLogicTest, ExpressionsThatCannotBeEvaluatedSayWhy) {
  EXPECT_EQ(FailureOf([&] { Engine.EvalFuzzyExpression(Variable, u"warm", nullptr); }),
            u"Invalid Fuzzy Expression: warm");
  EXPECT_EQ(FailureOf([&] { Engine.EvalFuzzyExpression(Variable, u"very or hot", nullptr); }),
            u"Missing fuzzy operand to be modified by hedge: very");
  EXPECT_EQ(FailureOf([&] { Engine.EvalFuzzyExpression(Variable, u"hot or", nullptr); }),
            u"Missing fuzzy operand to be modified by hedge: or");
  // Nothing at all, or the word for it, is the variable's empty term.
  ITavoValue Empty = Engine.EvalFuzzyExpression(Variable, ITavoValue(), nullptr);
  EXPECT_EQ(Empty->GetAsFuzzy()->GetName(), SEmptyFuzzy);
  EXPECT_EQ(Engine.EvalFuzzyExpression(Variable, u"empty", nullptr)->GetAsFuzzy(), Empty->GetAsFuzzy());
  // Several expressions at once give a list of their sets.
  using namespace testvalues;
  ITavoValue Both =
      Engine.EvalFuzzyExpression(Variable, List({List({Atom(u"hot")}), List({Atom(u"very"), Atom(u"cold")})}), nullptr);
  ASSERT_EQ(Both->GetDType(), dtList);
  EXPECT_EQ(Both->GetAsList()->GetValueCount(), 2);
}

TEST_F(TFuzzyLogicTest, NewVariablesGetTheDefaultTermsWithMediumAtHalfTheWidth) {
  Engine.Parse(u"(deftype level extends (type FUZZY) (range 10 20))");
  const IFuzzyVariable& Level = Engine.FindDefinedType(u"level")->GetFuzzyType();
  for (const char16_t* Name : {u"low", u"medium", u"high"}) EXPECT_TRUE(Level->FindFuzzySet(Name));
  EXPECT_DOUBLE_EQ(Level->FindFuzzySet(u"low")->DegreeOfMembership(10), 1.0);
  EXPECT_DOUBLE_EQ(Level->FindFuzzySet(u"high")->DegreeOfMembership(20), 1.0);
  // Half the width, 5, not the middle 15: kept so.
  EXPECT_DOUBLE_EQ(Level->FindFuzzySet(u"medium")->DegreeOfMembership(5), 1.0);
  // A term the type names itself stays as it is; without auto terms none
  // is added.
  Engine.Parse(u"(deftype upside extends (type FUZZY) (range 0 10) (values (term low ((0 0) (10 1)))))");
  EXPECT_DOUBLE_EQ(Engine.FindDefinedType(u"upside")->GetFuzzyType()->FindFuzzySet(u"low")->DegreeOfMembership(10),
                   1.0);
  Engine.SetFuzzyAutoTerms(false);
  Engine.Parse(u"(deftype bare extends (type FUZZY) (range 0 1))");
  EXPECT_FALSE(Engine.FindDefinedType(u"bare")->GetFuzzyType()->FindFuzzySet(u"low"));
}

TEST_F(TFuzzyLogicTest, AnEqualFuzzyFactIsCombinedIntoTheNewOneByTheInferenceMethod) {
  int First = Engine.Assert(u"(reading (place attic) (t cold))");
  int Second = Engine.Assert(u"(reading (place attic) (t hot))");
  EXPECT_NE(First, Second);
  EXPECT_EQ(Engine.GetFactCount(), 2) << "the initial fact and one reading";
  EXPECT_FALSE(Engine.GetFacts()->GetFactByID(First));
  EXPECT_DOUBLE_EQ(SetOf(Second)->DegreeOfMembership(10), 0.8) << "min-max: the union";
  EXPECT_DOUBLE_EQ(SetOf(Second)->DegreeOfMembership(90), 0.8);
  // Another place is another fact.
  Engine.Assert(u"(reading (place cellar) (t cold))");
  EXPECT_EQ(Engine.GetFactCount(), 3);
  // An unconditional assert intersects.
  IFact Hot = Engine.ParseFact(u"(reading (place cellar) (t hot))");
  int Third = Engine.Assert(Hot, true);
  EXPECT_DOUBLE_EQ(SetOf(Third)->DegreeOfMembership(50), 0.0);
  EXPECT_DOUBLE_EQ(SetOf(Third)->DegreeOfMembership(10), 0.0);
  // A host may do the inference itself.
  int Calls = 0;
  Engine.OnFuzzyInference = [&](TObject*, const IFact&, const IFact&, bool& Done) {
    ++Calls;
    Done = true;
  };
  int Fourth = Engine.Assert(u"(reading (place attic) (t cold))");
  EXPECT_EQ(Calls, 1);
  EXPECT_DOUBLE_EQ(SetOf(Fourth)->DegreeOfMembership(90), 0.0) << "the handler combined nothing";
}

TEST_F(TFuzzyLogicTest, ARulesStrengthCutsOrScalesWhatItAsserts) {
  Engine.Parse(
      u"(deftemplate alarm (slot t (type temp)))"
      u"(defrule warn (reading (t hot)) => (assert (alarm (t hot))))");
  for (TFuzzyCorrelationMethod Method : {fcmMinimum, fcmProduct}) {
    Engine.Reset();
    Engine.SetFuzzyCorrelationMethod(Method);
    Engine.Assert(u"(reading (t 75))");
    ASSERT_EQ(Engine.GetAgendaCount(), 1);
    EXPECT_FLOAT_EQ(Engine.GetAgenda()->GetActivations(0)->GetStrength(), 0.5f);
    Engine.Run();
    IFact Alarm;
    for (const IFact& Fact : *Engine.GetFacts())
      if (Fact->GetTemplate()->GetTemplateName() == u"alarm") Alarm = Fact;
    ASSERT_TRUE(Alarm);
    const IFuzzySet& Set = Alarm->GetValue(u"t")->GetAsFuzzy();
    if (Method == fcmMinimum) {
      EXPECT_DOUBLE_EQ(Set->DegreeOfMembership(100), 0.5) << "cut at the strength";
      EXPECT_DOUBLE_EQ(Set->DegreeOfMembership(60), 0.2);
    } else {
      EXPECT_DOUBLE_EQ(Set->DegreeOfMembership(100), 0.5) << "scaled by the strength";
      EXPECT_DOUBLE_EQ(Set->DegreeOfMembership(60), 0.1);
    }
    EXPECT_DOUBLE_EQ(Variable->FindFuzzySet(u"hot")->DegreeOfMembership(100), 1.0) << "the term stays whole";
  }
  // A strength of 1 leaves the facts alone and asks no handler.
  int Calls = 0;
  Engine.OnFuzzyCorrelation = [&](TObject*, const IFact&, float, bool&) { ++Calls; };
  Engine.Reset();
  Engine.Assert(u"(reading (t 100))");
  Engine.Run();
  EXPECT_EQ(Calls, 0);
}

TEST_F(TFuzzyLogicTest, TheEqualsThresholdIsClampedAndReachesEveryFuzzyType) {
  Engine.SetFuzzyEqualsThreshold(1.5f);
  EXPECT_FLOAT_EQ(Engine.GetFuzzyEqualsThreshold(), 1.0f);
  EXPECT_DOUBLE_EQ(Variable->GetFuzzyEqualsThreshold(), 1.0);
  Engine.SetFuzzyEqualsThreshold(-1);
  EXPECT_DOUBLE_EQ(Variable->GetFuzzyEqualsThreshold(), 0.0);
  // With a threshold of 0.6 a reading of 75 is no longer hot.
  Engine.SetFuzzyEqualsThreshold(0.6f);
  Engine.Parse(u"(defrule hot (reading (t hot)) =>)");
  Engine.Assert(u"(reading (t 75))");
  EXPECT_EQ(Engine.GetAgendaCount(), 0);
  Engine.Assert(u"(reading (place roof) (t 90))");
  EXPECT_EQ(Engine.GetAgendaCount(), 1);
}

}  // namespace
}  // namespace tavo
