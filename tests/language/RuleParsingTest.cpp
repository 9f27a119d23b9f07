// defrule as the parser reads it: what each element and constraint becomes
// on the patterns, and the failures.
#include <gtest/gtest.h>

#include "engine/InferenceEngine.h"
#include "language/TavoClipsParser.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

struct TRuleParsingTest : testing::Test {
  TRuleParsingTest() {
    Engine.Parse(u"(deftemplate person (slot name) (slot age) (multislot kids))");
  }
  // The rule of that text, from the engine's list.
  TRule* Rule(const char16_t* Text) {
    Engine.Parse(Text);
    return Engine.GetRules()->Get(Engine.GetRules()->Count() - 1);
  }
  String Failure(const char16_t* Text) {
    return FailureOf([&] { Engine.Parse(Text); });
  }
  // "value/sub-index/negated/conjunction" of each test of a slot.
  static String Tests(TTavoPattern* Pattern, const char16_t* Slot) {
    int Index = Pattern->IndexOfSlotName(Slot);
    String Result;
    for (int T = 0; T < Pattern->GetSlotTestCount(Index); ++T) {
      TTavoPatternMatchTest* Test = Pattern->GetSlotTest(Index, T);
      if (!Result.empty()) Result += u" ";
      Result += Test->GetSlotValue()->ToString() + u"/" + IntToStr(Test->GetMultiSlotSubIndex()) + u"/" +
                (Test->GetSlotTestType() == sttNotEquals ? u"~" : u"") + (Test->GetConjunction() ? u"&" : u"|");
    }
    return Result;
  }
  TInferenceEngine Engine;
};

TEST_F(TRuleParsingTest, DeclarationsSetSalienceFlagsAndRunCallsAtOnce) {
  TRule* R = Rule(u"(defrule r \"about r\" (declare (salience (+ 1 2)) (oneshot TRUE) (auto-focus (eq 1 1))"
                  u" (enabled 1)) (person) =>)");
  EXPECT_EQ(R->GetComment(), u"about r");
  EXPECT_EQ(R->GetSalience(), 3);
  EXPECT_EQ(R->GetSalienceValue()->GetDType(), dtFunCall) << "kept unevaluated";
  EXPECT_TRUE(R->GetOneShot());
  EXPECT_TRUE(R->GetAutoFocus());
  EXPECT_FALSE(R->GetEnabled()) << "anything but TRUE is false";
  TRule* Empty = Rule(u"(defrule e (declare) (person) =>)");
  EXPECT_EQ(Empty->GetPatternCount(), 1);
  EXPECT_EQ(Failure(u"(defrule f (declare (salience 1)) (declare (salience 2)) =>)").substr(0, 31),
            u"Parsing Error, Bad Slot Value: ");
}

TEST_F(TRuleParsingTest, ConnectivesBecomeFlagsOfTestsAtOneSubIndex) {
  TRule* R = Rule(u"(defrule r (person (name ?n&~bob|jim) (kids ?first $?rest ~x)) =>)");
  TTavoPattern* P = R->GetPattern(0);
  // The | keeps its hold until the field ends; ~bob stays negated.
  EXPECT_EQ(Tests(P, u"name").substr(0, 7), u"?n/-1/&");
  int Kids = P->IndexOfSlotName(u"kids");
  EXPECT_EQ(P->GetSlotLength(Kids), 3);
  EXPECT_EQ(Tests(P, u"kids"), u"?first/0/& $?rest/1/& x/2/~&");
  TRule* Blanks = Rule(u"(defrule b (person (kids ? ?)) (not (person (kids ?))) =>)");
  TTavoPattern* First = Blanks->GetPattern(0);
  int K = First->IndexOfSlotName(u"kids");
  EXPECT_NE(First->GetSlotTest(K, 0)->GetSlotValue()->GetAsString(), First->GetSlotTest(K, 1)->GetSlotValue()->GetAsString());
  // A blank variable of a negation is renamed for that pattern alone.
  TTavoPattern* Negated = Blanks->GetPattern(1);
  EXPECT_EQ(Negated->GetSlotTest(Negated->IndexOfSlotName(u"kids"), 0)->GetSlotValue()->GetAsString().substr(0, 3),
            u"_2_");
}

TEST_F(TRuleParsingTest, TheFirstAppearanceOfANameFixesItsKind) {
  TRule* R = Rule(u"(defrule r (person (kids $?x)) (person (name ?x)) =>)");
  TTavoPattern* Second = R->GetPattern(1);
  EXPECT_EQ(Second->GetSlotTest(Second->IndexOfSlotName(u"name"), 0)->GetSlotValue()->GetDType(), dtMultiVariable);
}

TEST_F(TRuleParsingTest, PredicatesReturnValuesAndTestsBecomeCalls) {
  TRule* R = Rule(u"(defrule r (person (age ?a&:(> ?a 1))) (person (age ~=(+ ?a 1))) (not (test (> 1 2))) =>)");
  TTavoPattern* First = R->GetPattern(0);
  EXPECT_EQ(First->GetSlotTestCount(First->IndexOfSlotName(u"age")), 2);
  TTavoPattern* Second = R->GetPattern(1);
  int Age = Second->IndexOfSlotName(u"age");
  ASSERT_EQ(Second->GetSlotTestCount(Age), 2);
  EXPECT_EQ(Second->GetSlotTest(Age, 0)->GetSlotValue()->GetAsString().substr(0, 4), u"_eq_");
  EXPECT_EQ(Second->GetSlotTest(Age, 0)->GetSlotTestType(), sttEquals);
  EXPECT_EQ(Second->GetSlotTest(Age, 1)->GetSlotValue()->GetAsFunCall()->GetName(), u"eq*");
  EXPECT_EQ(Second->GetSlotTest(Age, 1)->GetSlotTestType(), sttNotEquals);
  // A negated test has the count 0 and a negated test of its own.
  TTavoPattern* Test = R->GetPattern(2);
  EXPECT_EQ(Test->GetName(), u"test");
  EXPECT_EQ(Test->GetNegatedCount(), 0);
  EXPECT_EQ(Test->GetSlotTest(0, 0)->GetSlotTestType(), sttNotEquals);
  TRule* Leading = Rule(u"(defrule t (test (> 2 1)) =>)");
  EXPECT_EQ(Leading->GetPattern(0)->GetName(), u"Initial-Fact");
  EXPECT_EQ(Rule(u"(defrule n (not (not (person))) =>)")->GetPattern(1)->GetNegatedCount(), 2);
  EXPECT_EQ(Rule(u"(defrule bound ?t <- (test (> 2 1)) =>)")->GetPattern(1)->GetBoundName(), u"t");
}

TEST_F(TRuleParsingTest, OrderedPatternsAndTheTokensAfterASlot) {
  TRule* R = Rule(u"(defrule r (point 1 ?x ~?x) =>)");
  TTavoPattern* P = R->GetPattern(0);
  EXPECT_EQ(Tests(P, u"__Data"), u"1/0/& ?x/1/& ?x/2/~&");
  // What stands after a slot in place of ")" is swallowed in its place,
  // and the ")" that follows is misread.
  EXPECT_EQ(Failure(u"(defrule j (person (age 3) junk) =>)").substr(0, 33), u"Parsing Error, Expected \"=>\" in P");
  TRule* Unconstrained = Rule(u"(defrule u (person (age)) =>)");
  EXPECT_EQ(Unconstrained->GetPattern(0)->GetSlotTestCount(Unconstrained->GetPattern(0)->IndexOfSlotName(u"age")), 0);
}

TEST_F(TRuleParsingTest, FailuresNameWhatWasExpected) {
  EXPECT_EQ(Failure(u"(defrule r \"x\" ?x (person) =>)").substr(0, 31), u"Parsing Error, Expected \"<-\" in");
  EXPECT_EQ(Failure(u"(defrule r (person (3 4)) =>)").substr(0, 35), u"Parsing Error, Bad Slot Name: 3 in ");
  EXPECT_EQ(Failure(u"(defrule r ((person)) =>)").substr(0, 41), u"Parsing Error, Expected \"( <atom>\" in Par");
  EXPECT_EQ(Failure(u"(defrule r (not (person) (person)) =>)").substr(0, 34), u"Parsing Error, Expected \")\" in Par");
  EXPECT_EQ(Failure(u"(defrule r (person) => 5)").substr(0, 34), u"Parsing Error, Expected \")\" in Par");
  EXPECT_EQ(Failure(u"(defrule r (exists (person)) ?x <- (exists (person)) =>)").substr(0, 46),
            u"Parsing Error, \"not\" and \"test\" CEs cannot be ");
  // A rule that fails leaves nothing in the list.
  int Before = Engine.GetRules()->Count();
  Failure(u"(defrule r (person (age 1 2)) =>)");
  EXPECT_EQ(Engine.GetRules()->Count(), Before);
}

TEST_F(TRuleParsingTest, AHostParsesARuleOrItsSidesAlone) {
  TRule* R = Engine.ParseRule(u"(defrule host (person (name ?n)) => (printout t ?n))");
  ASSERT_NE(R, nullptr);
  EXPECT_EQ(Engine.GetRules()->Find(u"host"), R);
  auto* Side = new TRule(&Engine, u"sides", String());
  Engine.ParseRulePatterns(Side, u"(person (age ?a)) (person (age ?a))");
  Engine.ParseRuleActions(Side, u"(printout t ?a) (printout t crlf)");
  EXPECT_EQ(Side->GetPatternCount(), 2);
  EXPECT_EQ(Side->GetActions().Count(), 2);
  Engine.GetRules()->Add(Side);
  // Both roots are shared with the first rule, and a shared root leaves
  // no mark.
  EXPECT_EQ(Side->GetCompilation(), u"sides: +2+t");
}

// A fuzzy slot's constraint is one fuzzy value, made from the words of the
// slot's fuzzy type as the rule is read.
TEST_F(TRuleParsingTest, AFuzzySlotTakesItsConstraintAsOneFuzzyValue) {
  Engine.Parse(u"(deftype temperature extends (type FUZZY) (range 0 100)"
               u"  (values (term hot ((50 0) (100 1)))))"
               u"(deftemplate reading (slot temp (type temperature)))");
  TRule* R = Rule(u"(defrule r (reading (temp very hot)) =>)");
  TTavoPattern* P = R->GetPattern(0);
  ASSERT_EQ(P->GetSlotTestCount(P->IndexOfSlotName(u"temp")), 1);
  const ITavoValue& Value = P->GetSlotTest(P->IndexOfSlotName(u"temp"), 0)->GetSlotValue();
  ASSERT_EQ(Value->GetDType(), dtFuzzy);
  EXPECT_DOUBLE_EQ(Value->GetAsFuzzy()->DegreeOfMembership(75), 0.25) << "very squares the membership of hot";
  EXPECT_EQ(FailureOf([&] { Rule(u"(defrule bad (reading (temp warm)) =>)"); }).find(u"Invalid Fuzzy Expression: warm") !=
                String::npos,
            true);
}

}  // namespace
}  // namespace tavo
