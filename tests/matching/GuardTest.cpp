// Tests of a rule that follow its negations are checked as tokens reach
// the first of them: which joins get such checks, and that an engine with
// them behaves exactly like one whose tests cannot be checked early.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "engine/InferenceEngine.h"
#include "matching/ReteNetwork.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

const char16_t Templates[] =
    u"(deftemplate a (slot x) (slot y)) (deftemplate b (slot x) (slot y)) (deftemplate c (slot x))";

// The checks each negated join carries, in the order the joins were made.
std::vector<int> GuardsOfNegations(TInferenceEngine& Engine) {
  std::vector<int> Result;
  TReteNetwork* Network = Engine.GetRete();
  for (int I = 0; I < Network->GetNodeCount(); ++I)
    if (auto* Join = dynamic_cast<TJoinNode*>(Network->GetNode(I)); Join && Join->GetNegatedPattern())
      Result.push_back(Join->GetGuardCount());
  return Result;
}

// The tokens the negated joins' left memories hold.
int NegatedLeftTokens(TInferenceEngine& Engine) {
  int Result = 0;
  TReteNetwork* Network = Engine.GetRete();
  for (int I = 0; I < Network->GetNodeCount(); ++I)
    if (auto* Join = dynamic_cast<TJoinNode*>(Network->GetNode(I)); Join && Join->GetNegatedPattern())
      for (int B = Join->GetLeftMemory()->NextFilled(0); B >= 0; B = Join->GetLeftMemory()->NextFilled(B + 1))
        Result += Join->GetLeftMemory()->BucketAt(B).Count;
  return Result;
}

std::vector<int> GuardsFor(const char16_t* Rule) {
  TInferenceEngine Engine;
  Engine.Parse(Templates);
  Engine.Parse(Rule);
  return GuardsOfNegations(Engine);
}

TEST(GuardTest, OnlyPlainNegationsHoldingEveryFactTheTestReadsCheckIt) {
  using V = std::vector<int>;
  EXPECT_EQ(GuardsFor(u"(defrule r (a (x ?v) (y ?w)) (not (b (x ?v))) (test (> ?w 1)) =>)"), V({1}));
  // The earliest of a run of negations takes the check.
  EXPECT_EQ(GuardsFor(u"(defrule r (a (x ?v) (y ?w)) (not (b (x ?v))) (not (c (x ?w))) (test (> ?w 1)) =>)"),
            V({1, 0}));
  // Not before the fact the test reads has joined.
  EXPECT_EQ(GuardsFor(u"(defrule r (a (x ?v)) (not (c (x ?v))) (b (x ?v) (y ?u)) (not (c (x ?u)))"
                      u" (test (> ?u 1)) =>)"),
            V({0, 1}));
  // A global may change between two readings of one token.
  EXPECT_EQ(GuardsFor(u"(defglobal ?*low* = 1) (defrule r (a (y ?w)) (not (b (x ?w))) (test (> ?w ?*low*)) =>)"),
            V({0}));
  // One token's output blocks every other at the second join of exists.
  EXPECT_EQ(GuardsFor(u"(defrule r (a (y ?w)) (exists (b (x ?w))) (test (> ?w 1)) =>)"), V({0, 0}));
  // A test right after a positive join has nothing to move past.
  EXPECT_EQ(GuardsFor(u"(defrule r (a (y ?w)) (not (c (x ?w))) (b (x ?w)) (test (> ?w 1)) =>)"), V({0}));
}

// Activations and withdrawals as the network announces them, and the agenda
// after each step.
struct TWatched {
  TInferenceEngine Engine;
  String Log;
  explicit TWatched(const char16_t* Rules) {
    Engine.Parse(Templates);
    Engine.Parse(Rules);
    auto Text = [](TActivation* A) {
      return A->GetRule()->GetRuleName() + u":" + A->GetToken()->GetToFactsString() + u" ";
    };
    Engine.GetRete()->OnActivation = [this, Text](TObject*, TActivation* A) { Log += u"+" + Text(A); };
    Engine.GetRete()->OnDeactivation = [this, Text](TObject*, TActivation* A) { Log += u"-" + Text(A); };
  }
  String Agenda() const { return Engine.GetAgenda()->ToString(); }
};

TEST(GuardTest, AnEngineThatChecksEarlyMatchesOneThatCannotStepForStep) {
  // The same rules twice; in the second every test also reads a global that
  // never changes, so that no check can move.
  TWatched Early(
      u"(defrule r1 (a (x ?v) (y ?w)) (not (b (x ?v))) (test (> ?w 1)) =>)"
      u"(defrule r2 (a (x ?v) (y ?w)) (not (b (x ?v))) (not (c (x ?w))) (test (and (> ?w 0) (< ?v 3))) =>)"
      u"(defrule r3 (a (x ?v) (y ?w)) (b (x ?v) (y ?u)) (not (c (x ?u))) (test (<> ?u (- ?w 1))) =>)"
      u"(defrule r4 (a (x ?v)) (exists (b (x ?v))) (test (> ?v 0)) =>)"
      u"(defrule r5 (a (x ?v) (y ?w)) (not (c (x ?v))) (test (not (or (= ?w 2) (= ?v ?w)))) =>)");
  TWatched Late(
      u"(defglobal ?*one* = 1)"
      u"(defrule r1 (a (x ?v) (y ?w)) (not (b (x ?v))) (test (> ?w ?*one*)) =>)"
      u"(defrule r2 (a (x ?v) (y ?w)) (not (b (x ?v))) (not (c (x ?w)))"
      u"  (test (and (> ?w (- ?*one* 1)) (< ?v 3))) =>)"
      u"(defrule r3 (a (x ?v) (y ?w)) (b (x ?v) (y ?u)) (not (c (x ?u))) (test (<> ?u (- ?w ?*one*))) =>)"
      u"(defrule r4 (a (x ?v)) (exists (b (x ?v))) (test (> ?v (- ?*one* 1))) =>)"
      u"(defrule r5 (a (x ?v) (y ?w)) (not (c (x ?v))) (test (not (or (= ?w (+ ?*one* 1)) (= ?v ?w)))) =>)");
  EXPECT_EQ(GuardsOfNegations(Early.Engine), std::vector<int>({1, 1, 0, 1, 0, 0, 1}));
  EXPECT_EQ(GuardsOfNegations(Late.Engine), std::vector<int>({0, 0, 0, 0, 0, 0, 0}));

  std::mt19937 Random(7);
  std::vector<int> Held;
  int Withdrawals = 0;
  for (int Step = 0; Step < 1500; ++Step) {
    if (!Held.empty() && Random() % 3 == 0) {
      size_t Pick = Random() % Held.size();
      Early.Engine.Retract(Held[Pick]);
      Late.Engine.Retract(Held[Pick]);
      Held.erase(Held.begin() + long(Pick));
    } else {
      const char* Kinds[] = {"a", "b", "c"};
      std::string Text = std::string("(") + Kinds[Random() % 3] + " (x " + std::to_string(Random() % 4) +
                         ") (y " + std::to_string(Random() % 4) + "))";
      if (Text[1] == 'c') Text = Text.substr(0, Text.find(") (y")) + "))";
      const int Id = Early.Engine.Assert(Utf8ToString(Text));
      ASSERT_EQ(Late.Engine.Assert(Utf8ToString(Text)), Id);
      Held.push_back(Id);
    }
    ASSERT_EQ(Early.Log, Late.Log) << "step " << Step;
    ASSERT_EQ(Early.Agenda(), Late.Agenda()) << "step " << Step;
    Withdrawals += int(Early.Log.find(u"-") != String::npos);
    Early.Log.clear();
    Late.Log.clear();
  }
  EXPECT_GT(Early.Engine.GetAgendaCount(), 10);
  EXPECT_GT(Withdrawals, 50);
  // The early checks did refuse tokens: the negations hold fewer.
  EXPECT_LT(NegatedLeftTokens(Early.Engine), NegatedLeftTokens(Late.Engine));
}

TEST(GuardTest, ATestThatWouldRaiseRaisesOnlyWhereTheRuleReachesIt) {
  TInferenceEngine Engine;
  Engine.Parse(Templates);
  Engine.Parse(u"(defrule r (a (y ?w)) (not (b (x ?w))) (test (> ?w 1)) =>)");
  const int Blocker = Engine.Assert(u"(b (x low))");
  // Blocked by the negation: the test is never reached, so nothing raises.
  Engine.Assert(u"(a (y low))");
  EXPECT_EQ(Engine.GetAgendaCount(), 0);
  EXPECT_NE(FailureOf([&] { Engine.Retract(Blocker); }), u"");
  Engine.Assert(u"(a (y 2))");
  EXPECT_EQ(Engine.GetAgendaCount(), 1);
}

}  // namespace
}  // namespace tavo
