// Rules built through the object interface, matched through an engine's
// network: sharing, retraction, negation and its counting, late rules,
// multifield spans and the text of the network.
#include "matching/ReteNetwork.h"

#include <gtest/gtest.h>

#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

struct TTest {
  const char16_t* Slot;
  ITavoValue Value;
  bool Negated = false;
  int SubIndex = NoSubIndex;
};

struct TReteNetworkTest : testing::Test {
  TReteNetworkTest() {
    Engine.Parse(
        u"(deftemplate a (slot x) (slot y)) (deftemplate b (slot y) (slot z)) (deftemplate c (slot w))"
        u"(deftemplate m (multislot items))");
    TReteNetwork* Network = Engine.GetRete();
    Network->OnActivation = [this](TObject*, TActivation* A) { Log += u"+" + Text(A) + u" "; };
    Network->OnDeactivation = [this](TObject*, TActivation* A) { Log += u"-" + Text(A) + u" "; };
  }

  String Text(TActivation* Activation) {
    return Activation->GetRule()->GetRuleName() + u":" + Activation->GetToken()->GetToFactsString();
  }

  // A pattern on Template with the tests given, not yet in a rule.
  TTavoPattern* Pattern(TRule* Rule, const char16_t* Template, std::initializer_list<TTest> Tests,
                        int NegatedCount = 0) {
    auto* Result = new TTavoPattern(Rule, Template, Engine.FindFactTemplate(Template), NegatedCount);
    for (const TTest& Test : Tests) Result->AddTest(Test.Slot, Test.Value, Test.SubIndex, true, Test.Negated);
    return Result;
  }

  TRule* AddRule(const char16_t* Name, std::initializer_list<TTavoPattern*> Patterns, TRule* Rule = nullptr) {
    if (!Rule) Rule = NewRule(Name);
    for (TTavoPattern* Each : Patterns) Rule->GetPatterns().Add(Each);
    Engine.GetRules()->Add(Rule);
    return Rule;
  }

  TRule* NewRule(const char16_t* Name) {
    auto* Rule = new TRule(&Engine);
    Rule->SetRuleName(Name);
    return Rule;
  }

  ITavoValue Call(const char16_t* Text) { return Make<TTavoValue>(Engine.ParseFunCall(Text)); }

  // Log since the last look.
  String Take() { return std::exchange(Log, String()); }

  TInferenceEngine Engine;
  String Log;
};

TEST_F(TReteNetworkTest, RulesWithTheSameFirstPatternsShareNodesAndOutliveEachOther) {
  TRule* First = NewRule(u"first");
  AddRule(u"first", {Pattern(First, u"a", {{u"x", Var(u"v")}, {u"y", Atom(u"on")}}),
                     Pattern(First, u"b", {{u"y", Var(u"v")}})},
          First);
  TRule* Second = NewRule(u"second");
  AddRule(u"second",
          {Pattern(Second, u"a", {{u"x", Var(u"v")}, {u"y", Atom(u"on")}}), Pattern(Second, u"b", {{u"y", Var(u"v")}}),
           Pattern(Second, u"c", {})},
          Second);
  EXPECT_EQ(First->GetCompilation(), u"first: +1+1+1+2+t");
  EXPECT_EQ(Second->GetCompilation(), u"second: =1+1=2+2+t");
  Engine.Assert(u"(a (x 1) (y on))");
  Engine.Assert(u"(b (y 1))");
  Engine.Assert(u"(c (w 0))");
  EXPECT_EQ(Take(), u"+first:f-1, f-2 +second:f-1, f-2, f-3 ");
  Engine.RemoveRule(First);
  EXPECT_EQ(Take(), u"-first:f-1, f-2 ");
  Engine.Assert(u"(b (y 1) (z 2))");
  Engine.Assert(u"(a (x 2) (y on))");
  Engine.Assert(u"(b (y 2))");
  EXPECT_EQ(Take(), u"+second:f-1, f-4, f-3 +second:f-5, f-6, f-3 ");
  EXPECT_EQ(Engine.GetAgendaCount(), 3);
}

TEST_F(TReteNetworkTest, ACallOnItsOwnSlotsStaysAlphaAndOneOnEarlierVariablesJoins) {
  TRule* Alpha = NewRule(u"alpha");
  AddRule(u"alpha", {Pattern(Alpha, u"a", {{u"x", Var(u"v")}, {u"x", Call(u"(> ?v 1)")}})}, Alpha);
  EXPECT_EQ(Alpha->GetCompilation(), u"alpha: +1+1+t");
  TRule* Join = NewRule(u"join");
  AddRule(u"join",
          {Pattern(Join, u"a", {{u"x", Var(u"v")}}), Pattern(Join, u"b", {{u"y", Var(u"w")}, {u"y", Call(u"(> ?w ?v)")}})},
          Join);
  // The second join is not shared: a call is never equal to another.
  TRule* Again = NewRule(u"again");
  AddRule(u"again",
          {Pattern(Again, u"a", {{u"x", Var(u"v")}}), Pattern(Again, u"b", {{u"y", Var(u"w")}, {u"y", Call(u"(> ?w ?v)")}})},
          Again);
  EXPECT_EQ(Join->GetCompilation(), u"join: +1+2+t");
  EXPECT_EQ(Again->GetCompilation(), u"again: +2+t");
  Engine.Assert(u"(a (x 5))");
  Engine.Assert(u"(a (x 0))");
  Engine.Assert(u"(b (y 3))");
  EXPECT_EQ(Take(), u"+alpha:f-1 +join:f-2, f-3 +again:f-2, f-3 ");
  Engine.Assert(u"(b (y 9))");
  EXPECT_EQ(Take(), u"+join:f-1, f-4 +join:f-2, f-4 +again:f-1, f-4 +again:f-2, f-4 ");
}

TEST_F(TReteNetworkTest, RetractingAFactWithdrawsExactlyItsActivations) {
  TRule* Rule = NewRule(u"pair");
  AddRule(u"pair", {Pattern(Rule, u"a", {{u"x", Var(u"v")}}), Pattern(Rule, u"b", {{u"y", Var(u"v")}})}, Rule);
  Engine.Assert(u"(a (x 1))");
  Engine.Assert(u"(a (x 2))");
  int B1 = Engine.Assert(u"(b (y 1))");
  Engine.Assert(u"(b (y 2))");
  Engine.Assert(u"(b (y 1) (z 3))");
  EXPECT_EQ(Take(), u"+pair:f-1, f-3 +pair:f-2, f-4 +pair:f-1, f-5 ");
  Engine.Retract(B1);
  EXPECT_EQ(Take(), u"-pair:f-1, f-3 ");
  Engine.Retract(1);
  EXPECT_EQ(Take(), u"-pair:f-1, f-5 ");
  EXPECT_EQ(Engine.GetAgendaCount(), 1);
}

TEST_F(TReteNetworkTest, KeysOfEqualHashJoinOnlyWhereTheValuesAreEqual) {
  // 5, 5.0 and the fact id 5 hash alike; only the integer equals 5, and a
  // stored key vouches for its value only against a probe of its own type.
  TRule* Rule = NewRule(u"pair");
  AddRule(u"pair",
          {Pattern(Rule, u"a", {{u"x", Var(u"v")}}), Pattern(Rule, u"b", {{u"y", Var(u"v")}}),
           Pattern(Rule, u"c", {{u"w", Var(u"v")}})},
          Rule);
  Engine.Assert(u"(a (x 5))");
  Engine.Assert(u"(a (x 5.0))");
  Engine.Assert(u"(b (y 5))");
  Engine.Assert(u"(b (y 5.0))");
  IFact ById = Engine.FindFactTemplate(u"b")->NewFact();
  ById->SetValue(u"y", Make<TTavoValue>(5, dtFactId));
  Engine.Assert(ById);
  Engine.Assert(u"(c (w 5.0))");
  Engine.Assert(u"(c (w 5))");
  EXPECT_EQ(Take(), u"+pair:f-2, f-4, f-6 +pair:f-1, f-3, f-7 ");
  Engine.Retract(3);
  EXPECT_EQ(Take(), u"-pair:f-1, f-3, f-7 ");
}

TEST_F(TReteNetworkTest, WithdrawalsFindTheirActivationsAcrossFiringsAndEmptyings) {
  // A terminal finds a withdrawn match by a table it builds at the first
  // withdrawal and drops when its last activation goes.
  TRule* Rule = NewRule(u"pair");
  AddRule(u"pair", {Pattern(Rule, u"a", {{u"x", Var(u"v")}}), Pattern(Rule, u"b", {{u"y", Var(u"v")}})}, Rule);
  for (int I = 1; I <= 3; ++I) Engine.Assert(u"(a (x " + IntToStr(I) + u"))");
  for (int I = 1; I <= 3; ++I) Engine.Assert(u"(b (y " + IntToStr(I) + u"))");
  Take();
  Engine.Retract(5);
  EXPECT_EQ(Take(), u"-pair:f-2, f-5 ");
  Engine.Run();
  EXPECT_EQ(Engine.GetAgendaCount(), 0);
  Engine.Assert(u"(b (y 2))");
  Engine.Assert(u"(b (y 2) (z 1))");
  EXPECT_EQ(Take(), u"+pair:f-2, f-7 +pair:f-2, f-8 ");
  Engine.Retract(8);
  Engine.Retract(2);
  EXPECT_EQ(Take(), u"-pair:f-2, f-8 -pair:f-2, f-7 ");
  EXPECT_EQ(Engine.GetAgendaCount(), 0);
}

TEST_F(TReteNetworkTest, NegationWithdrawsAMatchWhenABlockingFactArrives) {
  TRule* Rule = NewRule(u"lonely");
  AddRule(u"lonely", {Pattern(Rule, u"a", {{u"x", Var(u"v")}}), Pattern(Rule, u"b", {{u"y", Var(u"v")}}, 1)}, Rule);
  Engine.Assert(u"(a (x 1))");
  String Null = u"f-" + IntToStr(Engine.GetNullFact()->GetID());
  EXPECT_EQ(Take(), u"+lonely:f-1, " + Null + u" ");
  int Blocker = Engine.Assert(u"(b (y 1))");
  Engine.Assert(u"(b (y 7))");
  EXPECT_EQ(Take(), u"-lonely:f-1, " + Null + u" ");
  Engine.Retract(Blocker);
  EXPECT_EQ(Take(), u"+lonely:f-1, " + Null + u" ");
}

TEST_F(TReteNetworkTest, ALeftTokenCountsOnlyRightFactsThatCameAfterIt) {
  TRule* Rule = NewRule(u"lonely");
  AddRule(u"lonely", {Pattern(Rule, u"a", {{u"x", Var(u"v")}}), Pattern(Rule, u"b", {{u"y", Var(u"v")}}, 1)}, Rule);
  int First = Engine.Assert(u"(b (y 1) (z 1))");
  Engine.Assert(u"(b (y 1) (z 2))");
  Engine.Assert(u"(a (x 1))");
  EXPECT_EQ(Take(), u"");
  // The stored copy counted nothing: one retraction lets it through while
  // another blocker still stands.
  Engine.Retract(First);
  EXPECT_EQ(Engine.GetAgendaCount(), 1);
}

TEST_F(TReteNetworkTest, ExistsPassesWhileTheFirstJoinGivesNothing) {
  TRule* Rule = NewRule(u"some");
  AddRule(u"some", {Pattern(Rule, u"a", {}), Pattern(Rule, u"b", {}, 2)}, Rule);
  EXPECT_EQ(Rule->GetCompilation(), u"some: +1+1+2+t");
  Engine.Assert(u"(a (x 1))");
  EXPECT_EQ(Take(), u"");
  int B1 = Engine.Assert(u"(b (y 1))");
  int B2 = Engine.Assert(u"(b (y 2))");
  EXPECT_EQ(Engine.GetAgendaCount(), 1);
  Engine.Retract(B1);
  EXPECT_EQ(Engine.GetAgendaCount(), 1);
  Engine.Retract(B2);
  EXPECT_EQ(Engine.GetAgendaCount(), 0);
}

TEST_F(TReteNetworkTest, ALateRuleMeetsTheFactsAndRebuildsTheActivationsOfItsSharedRoot) {
  Engine.Assert(u"(a (x 1))");
  TRule* Old = NewRule(u"old");
  AddRule(u"old", {Pattern(Old, u"a", {{u"x", Var(u"v")}})}, Old);
  EXPECT_EQ(Take(), u"+old:f-1 ");
  TRule* Late = NewRule(u"late");
  AddRule(u"late", {Pattern(Late, u"a", {{u"x", Var(u"w")}})}, Late);
  EXPECT_EQ(Take(), u"-old:f-1 +old:f-1 +late:f-1 ");
  EXPECT_EQ(Engine.GetAgendaCount(), 2);
}

TEST_F(TReteNetworkTest, MultifieldSpansRunFromLongestToShortest) {
  // Each token holds a clone whose slot has the span as one item at the
  // variable's place.
  std::vector<std::pair<int, int>> Spans;
  Engine.GetRete()->OnActivation = [&](TObject*, TActivation* A) {
    IValueVector Items = A->GetToken()->GetFact()->GetValue(u"items")->GetAsList();
    Spans.emplace_back(Items->GetValueCount(), Items->Get(0)->GetAsList()->GetValueCount());
  };
  TRule* Rule = NewRule(u"spans");
  ITavoValue Span = Make<TTavoValue>(String(u"s"), dtMultiVariable);
  AddRule(u"spans", {Pattern(Rule, u"m", {{u"items", Span, false, 0}})}, Rule);
  Engine.Assert(u"(m (items p q))");
  ASSERT_EQ(Spans.size(), 3u);
  EXPECT_EQ(Spans[0], std::make_pair(1, 2));
  EXPECT_EQ(Spans[1], std::make_pair(2, 1));
  EXPECT_EQ(Spans[2], std::make_pair(3, 0));
}

TEST_F(TReteNetworkTest, RulesWithoutPatternsOrOpeningWithANegationMatchTheInitialFact) {
  TRule* Bare = AddRule(u"bare", {});
  TRule* Negated = NewRule(u"none");
  AddRule(u"none", {Pattern(Negated, u"b", {}, 1)}, Negated);
  EXPECT_EQ(Bare->GetPatternCount(), 1);
  EXPECT_EQ(Negated->GetPatternCount(), 2);
  Engine.Reset();
  EXPECT_EQ(Engine.GetAgendaCount(), 2);
  Engine.Assert(u"(b (y 1))");
  EXPECT_EQ(Engine.GetAgendaCount(), 1);
}

TEST_F(TReteNetworkTest, FiringRunsTheActionsWithTheVariablesBound) {
  TRule* Rule = NewRule(u"copy");
  AddRule(u"copy", {Pattern(Rule, u"a", {{u"x", Var(u"v")}})}, Rule);
  Rule->GetActions().Add(Engine.ParseFunCall(u"(assert (c (w ?v)))"));
  Engine.Assert(u"(a (x 7))");
  EXPECT_EQ(Engine.Run(), 1);
  EXPECT_EQ(Engine.GetFactCount(), 3);
  EXPECT_EQ(Engine.GetFacts()->Get(2)->ToString(), u"(c (w 7))");
  EXPECT_TRUE(Rule->GetHasFired());
}

TEST_F(TReteNetworkTest, TheNetworkTextShowsEveryNodeOnALine) {
  TRule* Rule = NewRule(u"shown");
  AddRule(u"shown", {Pattern(Rule, u"a", {{u"x", Var(u"v")}, {u"y", Atom(u"on")}}), Pattern(Rule, u"b", {{u"y", Var(u"v")}})},
          Rule);
  EXPECT_EQ(Engine.GetRete()->ToString(),
            u" In/Out#: 0/1 RuleUse: 1 Value: a Test: pmtTestClassType Args: (0, 0)\r\n"
            u" In/Out#: 1/1 RuleUse: 1 Value: on Test: pmtTestEqual Args: (y, -1)\r\n"
            u" In/Out#: 0/1 RuleUse: 1 Value: b Test: pmtTestClassType Args: (0, 0)\r\n"
            u" In/Out#: 2/1 RuleUse: 1 NumTests: 1 (= tstSlot TokenIdx: 0 Left: x Right: y) Left Memory:  Right Memory: \r\n"
            u" In/Out#: 1/0 RuleUse: 1 Rule: shown\r\n");
}

TEST_F(TReteNetworkTest, CompileErrorsLeaveNoRuleBehind) {
  TRule* Rule = NewRule(u"broken");
  Rule->GetPatterns().Add(Pattern(Rule, u"a", {{u"x", Var(u"v")}}));
  Rule->GetPatterns().Add(Pattern(Rule, u"b", {{u"y", Call(u"(> ?v ?nowhere)")}}));
  EXPECT_EQ(FailureOf([&] { Engine.GetRules()->Add(Rule); }), u"Unknown variable name: nowhere");
  EXPECT_EQ(Engine.GetRules()->Count(), 0);
  EXPECT_FALSE(Engine.GetRete()->HoldsRule(Rule));
  EXPECT_EQ(Engine.GetRete()->GetNodeCount(), 0);
  TRule* Negated = NewRule(u"negated");
  Negated->GetPatterns().Add(Pattern(Negated, u"a", {}));
  EXPECT_EQ(FailureOf([&] { Negated->GetPatterns().Add(Pattern(Negated, u"b", {{u"y", Var(u"q"), true}})); }),
            u"First Use of Variable is negated, variable name is q");
  delete Rule;
  delete Negated;
}

TEST_F(TReteNetworkTest, OrConstraintsBecomeOneVariableAndOneCallOfOr) {
  TRule* Rule = NewRule(u"either");
  TTavoPattern* Either = Pattern(Rule, u"a", {});
  Either->AddTest(u"x", Int(1), NoSubIndex, true, false);
  Either->AddTest(u"x", Int(2), NoSubIndex, false, false);
  Either->AddTest(u"y", Var(u"k"), NoSubIndex, true, false);
  AddRule(u"either", {Either}, Rule);
  // The slot's tests: a generated variable, bound in the rule, and the
  // call that tries each alternative on it.
  int X = Either->IndexOfSlotName(u"x");
  ASSERT_EQ(Either->GetSlotTestCount(X), 2);
  String Blank = Either->GetSlotTest(X, 0)->GetSlotValue()->GetAsString();
  EXPECT_EQ(Blank.substr(0, 7), u"_blank_");
  EXPECT_NE(Rule->GetBindingByName(Blank), nullptr);
  EXPECT_EQ(Either->GetSlotTest(X, 1)->GetSlotValue()->GetAsFunCall()->GetName(), u"or");
  EXPECT_EQ(Either->GetNumORConstraints(), 0);
  Engine.Assert(u"(a (x 1) (y p))");
  Engine.Assert(u"(a (x 3) (y q))");
  Engine.Assert(u"(a (x 2) (y r))");
  EXPECT_EQ(Take(), u"+either:f-1 +either:f-3 ");
}

TEST_F(TReteNetworkTest, AChangedRuleIsCompiledAnewAndADisabledOneActivatesNothing) {
  TRule* Rule = NewRule(u"changing");
  AddRule(u"changing", {Pattern(Rule, u"a", {{u"x", Var(u"v")}})}, Rule);
  Engine.Assert(u"(a (x 1))");
  EXPECT_EQ(Take(), u"+changing:f-1 ");
  Rule->SetEnabled(false);
  EXPECT_EQ(Take(), u"-changing:f-1 ");
  EXPECT_EQ(Engine.GetAgendaCount(), 0);
  Rule->SetEnabled(true);
  EXPECT_EQ(Take(), u"+changing:f-1 ");
  // One update, one compilation.
  Rule->BeginUpdate();
  Rule->GetPatterns().Get(0)->SetUnique(true);
  Rule->GetActions().Add(Engine.ParseFunCall(u"(assert (c (w 1)))"));
  EXPECT_EQ(Take(), u"");
  Rule->EndUpdate();
  EXPECT_EQ(Take(), u"-changing:f-1 +changing:f-1 ");
  EXPECT_EQ(Rule->GetCompilation(), u"changing: +1+t");
}

TEST_F(TReteNetworkTest, ADisabledNetworkDropsAdditionsAndAOneShotRuleFiresOnce) {
  TRule* Once = NewRule(u"once");
  Once->SetOneShot(true);
  AddRule(u"once", {Pattern(Once, u"a", {{u"x", Var(u"v")}})}, Once);
  Engine.Assert(u"(a (x 1))");
  EXPECT_EQ(Engine.Run(), 1);
  Engine.Assert(u"(a (x 2))");
  EXPECT_EQ(Engine.GetAgendaCount(), 0);
  Engine.Reset();
  Engine.Assert(u"(a (x 3))");
  EXPECT_EQ(Engine.GetAgendaCount(), 1);
  Engine.GetRete()->SetEnabled(false);
  EXPECT_EQ(Engine.GetAgendaCount(), 0);
  EXPECT_EQ(Engine.GetRete()->GetNodeCount(), 0);
  EXPECT_FALSE(Engine.GetRete()->ProcessToken(Make<TTavoToken>(taAdd, Engine.GetFacts()->Get(0))));
}

TEST_F(TReteNetworkTest, AnActivationTellsItsRuleAndFactsAndACloneStartsAtFullStrength) {
  TRule* Rule = NewRule(u"shown");
  AddRule(u"shown", {Pattern(Rule, u"a", {{u"x", Var(u"v")}})}, Rule);
  Engine.Assert(u"(a (x 1))");
  TActivation* Activation = Engine.GetAgenda()->GetActivations(0);
  Activation->SetStrength(0.25f);
  EXPECT_EQ(Activation->ToString(), u"0 shown : f-1 (0.2500)");
  std::unique_ptr<TActivation> Clone(Activation->Clone());
  EXPECT_EQ(Clone->GetStrength(), 1.0f);
  EXPECT_EQ(Clone->GetToken(), Activation->GetToken());
  Clone->Assign(Activation);
  EXPECT_EQ(Clone->GetStrength(), 0.25f);
  Activation->SetStrength(3);
  EXPECT_EQ(Activation->GetStrength(), 1.0f);
  // The clone is not in the node's list: freeing it withdraws nothing.
  Clone.reset();
  EXPECT_EQ(Engine.GetAgendaCount(), 1);
}

TEST_F(TReteNetworkTest, AFuzzyMatchWeighsTheTokenByItsStrength) {
  Engine.Parse(u"(deftype level extends (type FUZZY) (range 0 10)"
               u"  (values (term little ((0 1) (5 0))) (term much ((5 0) (10 1)))))"
               u"(deftemplate reading (slot level (type level)))");
  TRule* Rule = NewRule(u"little");
  AddRule(u"little", {Pattern(Rule, u"reading", {{u"level", Engine.ParseValue(u"((0 1) (5 0))")->Resolve(nullptr)}})}, Rule);
  Engine.Assert(u"(reading (level 2))");
  ASSERT_EQ(Engine.GetAgendaCount(), 1);
  EXPECT_FLOAT_EQ(Engine.GetAgenda()->GetActivations(0)->GetStrength(), 0.6f) << "the membership of 2 in little";
  // Below the activation threshold the match ends at the node.
  Engine.SetMinActivationStrength(0.7f);
  Engine.Assert(u"(reading (level 1.5))");
  Engine.Assert(u"(reading (level 1))");
  ASSERT_EQ(Engine.GetAgendaCount(), 2);
  EXPECT_FLOAT_EQ(Engine.GetAgenda()->GetActivations(0)->GetStrength(), 0.8f);
}

TEST_F(TReteNetworkTest, AJoinOnAGoalTemplateAsksForTheGoal) {
  Engine.Parse(u"(deftemplate d (slot k)) (do-backward-chaining d)");
  TRule* Rule = NewRule(u"wants");
  AddRule(u"wants", {Pattern(Rule, u"a", {{u"x", Var(u"v")}}), Pattern(Rule, u"d", {{u"k", Var(u"v")}})}, Rule);
  Engine.Assert(u"(a (x 1))");
  EXPECT_NE(Engine.GetFacts()->FindFact(Engine.ParseFact(u"(need-d (k 1))")), -1);
}

TEST_F(TReteNetworkTest, AUniqueJoinStopsAtItsFirstMatch) {
  TRule* Rule = NewRule(u"first");
  TTavoPattern* Any = Pattern(Rule, u"b", {{u"y", Var(u"v")}});
  Any->SetUnique(true);
  AddRule(u"first", {Pattern(Rule, u"a", {{u"x", Var(u"v")}}), Any}, Rule);
  Engine.Assert(u"(b (y 1) (z 1))");
  Engine.Assert(u"(b (y 1) (z 2))");
  Engine.Assert(u"(a (x 1))");
  EXPECT_EQ(Take(), u"+first:f-3, f-1 ");
}

}  // namespace
}  // namespace tavo
