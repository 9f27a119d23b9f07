// The rule object on an engine: names, bindings, salience, the left side's
// variables, and firing.
#include "knowledge/TavoRule.h"

#include <gtest/gtest.h>

#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

struct TTavoRuleTest : testing::Test {
  TTavoRuleTest() { Engine.Parse(u"(deftemplate a (slot x) (slot y)) (deftemplate b (slot y))"); }
  TTavoPattern* Pattern(TRule* Rule, const char16_t* Template, int NegatedCount = 0) {
    return new TTavoPattern(Rule, Template, Engine.FindFactTemplate(Template), NegatedCount);
  }
  TInferenceEngine Engine;
};

TEST_F(TTavoRuleTest, NamesAreNumberedAndCheckedAndRenameTheListEntry) {
  auto* First = new TRule(&Engine);
  auto* Second = new TRule(&Engine);
  EXPECT_EQ(First->GetRuleName(), u"Rule_" + IntToStr(First->GetID()));
  EXPECT_EQ(Second->GetID(), First->GetID() + 1);
  EXPECT_EQ(FailureOf([&] { First->SetRuleName(u"bad name"); }), u"\"bad name\" contains unexpected character: \" \"");
  EXPECT_EQ(FailureOf([&] { First->SetRuleName(u"why?"); }), u"\"why?\" contains unexpected character: \"?\"");
  Engine.GetRules()->Add(First);
  First->SetRuleName(u"renamed");
  EXPECT_EQ(Engine.GetRules()->Find(u"renamed"), First);
  EXPECT_EQ(Engine.GetRules()->Find(u"Rule_" + IntToStr(First->GetID())), nullptr);
  delete Second;
  // A rule freed by its host leaves the list and the network.
  delete First;
  EXPECT_EQ(Engine.GetRules()->Count(), 0);
  EXPECT_EQ(Engine.GetRete()->GetNodeCount(), 0);
}

TEST_F(TTavoRuleTest, DuplicateNamesFollowTheEnginesPolicy) {
  auto* Old = new TRule(&Engine, u"same", String());
  Old->GetPatterns().Add(Pattern(Old, u"a"));
  Engine.GetRules()->Add(Old);
  auto* New = new TRule(&Engine, u"same", String());
  Engine.SetDuplicateConstructs(dcError);
  EXPECT_EQ(FailureOf([&] { Engine.GetRules()->Add(New); }), u"Duplicate Rules defined with same name: \"same\"");
  Engine.SetDuplicateConstructs(dcIgnore);
  Engine.GetRules()->Add(New);
  EXPECT_EQ(Engine.GetRules()->Find(u"same"), Old);
  Engine.SetDuplicateConstructs(dcOverwrite);
  int Removed = 0;
  Engine.OnRemoveRule = [&](TObject*, TRule*) { ++Removed; };
  Engine.GetRules()->Add(New);
  EXPECT_EQ(Removed, 1);
  EXPECT_EQ(Engine.GetRules()->Find(u"same"), New);
  EXPECT_EQ(Engine.GetRules()->Count(), 1);
}

TEST_F(TTavoRuleTest, VariablesBindWhereTheyFirstStandAndBlanksOfNegationsStayPrivate) {
  auto* Rule = new TRule(&Engine, u"vars", String());
  TTavoPattern* First = Pattern(Rule, u"a");
  First->SetBoundName(u"f");
  First->AddTest(u"x", Var(u"v"), NoSubIndex, true, false);
  First->AddTest(u"y", Var(u"v"), NoSubIndex, true, false);
  Rule->GetPatterns().Add(First);
  TTavoPattern* Test = new TTavoPattern(Rule, u"test", nullptr);
  Rule->GetPatterns().Add(Test);
  TTavoPattern* Negated = Pattern(Rule, u"b", 1);
  Negated->AddTest(u"y", Var(u"_blank_9"), NoSubIndex, true, false);
  Rule->GetPatterns().Add(Negated);
  ASSERT_EQ(Rule->GetBindingCount(), 3);
  TBinding* Fact = Rule->GetBindingByName(u"f");
  EXPECT_EQ(Fact->GetSlotIndex(), SPatternBinding);
  TBinding* V = Rule->GetBindingByName(u"v");
  EXPECT_EQ(V->GetSlotIndex(), u"x");
  // The test element takes no place: the negation is at position 1.
  TBinding* Blank = Rule->GetBinding(2);
  EXPECT_EQ(Blank->GetName(), u"_3__blank_9");
  EXPECT_EQ(Blank->GetFactIndex(), 1);
  EXPECT_EQ(Rule->GetBindingByName(u"_blank_9"), nullptr);
  // An equal binding is one binding.
  EXPECT_EQ(Rule->AddBinding(u"v", 0, u"x", NoSubIndex), V);
  delete Rule;
}

TEST_F(TTavoRuleTest, SalienceExpressionsAreEvaluatedWithoutRecompilingTheRule) {
  auto* Rule = new TRule(&Engine, u"salient", String());
  Rule->GetPatterns().Add(Pattern(Rule, u"a"));
  Engine.GetRules()->Add(Rule);
  int Changes = 0;
  Rule->OnChange = [&](TObject*) { ++Changes; };
  Rule->SetSalience(Make<TTavoValue>(Engine.ParseFunCall(u"(+ 1 2)")));
  EXPECT_EQ(Rule->GetSalience(), 3);
  EXPECT_EQ(Rule->GetSalienceValue()->GetDType(), dtFunCall);
  EXPECT_EQ(Changes, 0);
  Rule->SetSalienceInteger(7);
  EXPECT_EQ(Rule->GetSalience(), 7);
  EXPECT_EQ(Changes, 1);
}

TEST_F(TTavoRuleTest, FiringBindsTheTokensValuesAndAReturnStopsTheActions) {
  auto* Rule = new TRule(&Engine, u"fires", String());
  TTavoPattern* First = Pattern(Rule, u"a");
  First->SetBoundName(u"f");
  First->AddTest(u"x", Var(u"v"), NoSubIndex, true, false);
  Rule->GetPatterns().Add(First);
  Rule->GetActions().Add(Engine.ParseFunCall(u"(assert (b (y ?v)))"));
  Rule->GetActions().Add(Engine.ParseFunCall(u"(return)"));
  Rule->GetActions().Add(Engine.ParseFunCall(u"(assert (b (y never)))"));
  String Seen;
  Rule->OnFire = [&](TRule*, TTavoContext* Context) {
    Seen = Context->GetVariable(u"f")->ToString() + u" " + Context->GetVariable(SRuleBinding)->GetAsString();
  };
  Engine.GetRules()->Add(Rule);
  Engine.Assert(u"(a (x 4))");
  EXPECT_EQ(Engine.Run(), 1);
  EXPECT_EQ(Seen, u"<Fact-1> fires");
  EXPECT_EQ(Engine.GetFactCount(), 3);
  EXPECT_EQ(Engine.GetFacts()->Get(2)->ToString(), u"(b (y 4))");
}

TEST_F(TTavoRuleTest, APatternNeedsAnEngineAndAKnownSlot) {
  auto* Loose = new TRule(nullptr);
  EXPECT_EQ(FailureOf([&] { Loose->GetPatterns().Add(new TTavoPattern(Loose, u"a", nullptr)); }),
            u"Unknown/Undefined Inference Engine");
  delete Loose;
  TTavoPattern Alone(nullptr, u"a", Engine.FindFactTemplate(u"a"));
  EXPECT_EQ(FailureOf([&] { Alone.AddTest(u"z", Int(1), NoSubIndex, true, false); }), u"No such slot name: \"z\"");
  TTavoPattern NoTemplate(nullptr, u"a", nullptr);
  EXPECT_EQ(FailureOf([&] { NoTemplate.AddTest(u"x", Int(1), NoSubIndex, true, false); }), u"Fact Template is missing");
  EXPECT_EQ(Alone.GetSlotName(0), u"x");
  EXPECT_EQ(Alone.GetSlotTestCount(0), 0);
}

}  // namespace
}  // namespace tavo
