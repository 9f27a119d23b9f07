// The recognise-act cycle through the host's interface: order of firing,
// limits, halting, failures, events, re-sorting and statistics.
#include <gtest/gtest.h>

#include <future>

#include "engine/InferenceEngine.h"
#include "knowledge/TavoRule.h"
#include "matching/ReteNodes.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

// A clock that reads what the test sets, so that run times are known.
class TClockedEngine : public TInferenceEngine {
 public:
  mutable std::vector<double> Readings;

 protected:
  double ClockSeconds() const override {
    if (Readings.empty()) return 0;
    double Reading = Readings.front();
    Readings.erase(Readings.begin());
    return Reading;
  }
};

struct TRunCycleTest : testing::Test {
  TRunCycleTest() {
    Engine.OnPrintOut = [this](TObject*, const String&, const String& Text) { Printed += Text; };
    Engine.OnEndInference = [this](TObject*, int Fired) { Log += u"end " + IntToStr(Fired) + u";"; };
    Engine.Parse(u"(deftemplate job (slot n) (slot x))");
  }
  // The rules' names in agenda order.
  String Order() const {
    String Result;
    for (TActivation* Activation : *Engine.GetAgenda())
      Result += Activation->GetRule()->GetRuleName() + u":" + Activation->GetToken()->GetToFactsString() + u" ";
    return Result;
  }
  TRule* Rule(const char16_t* Name) const { return Engine.GetRules()->Find(Name); }

  TClockedEngine Engine;
  String Printed;
  String Log;
};

TEST_F(TRunCycleTest, EqualSaliencesFireNewestFirstDepthFirstAndOldestFirstBreadthFirst) {
  Engine.Parse(u"(defrule r (job (n ?n)) => (printout t ?n \" \"))");
  Engine.Assert(u"(job (n A))");
  Engine.Assert(u"(job (n B))");
  EXPECT_EQ(Engine.Run(), 2);
  EXPECT_EQ(Printed, u"B A ");
  Engine.Reset();
  Printed.clear();
  Engine.SetStrategy(ssBreadthFirst);
  Engine.Assert(u"(job (n A))");
  Engine.Assert(u"(job (n B))");
  EXPECT_EQ(Engine.Run(), 2);
  EXPECT_EQ(Printed, u"A B ");
}

TEST_F(TRunCycleTest, ASalienceAmongEqualsInTheMiddleGoesWhereTheSearchProbes) {
  Engine.Parse(
      u"(defrule s20 (declare (salience 20)) (job (n 20)) =>)"
      u"(defrule s10 (declare (salience 10)) (job (n 10)) =>)"
      u"(defrule s0 (job (n 0)) =>)");
  int Placed = -2;
  Engine.OnAddActivation = [&](TObject*, int Index, TActivation*) { Placed = Index; };
  for (TSearchStrategy Strategy : {ssDepthFirst, ssBreadthFirst}) {
    Engine.Reset();
    Engine.SetStrategy(Strategy);
    for (const char16_t* Fact : {u"(job (n 20))", u"(job (n 10) (x 1))", u"(job (n 10) (x 2))", u"(job (n 0))"})
      Engine.Assert(Fact);
    Engine.Assert(u"(job (n 10) (x 3))");
    EXPECT_EQ(Placed, 1) << "10 into [20, 10, 10, 0]";
    EXPECT_EQ(Order().substr(0, 15), u"s20:f-1 s10:f-5");
  }
}

TEST_F(TRunCycleTest, ANewStrategyResortsTheAgendaWithClonesAtFullStrength) {
  Engine.Parse(u"(defrule r (job (n ?n)) =>) (defrule top (declare (salience 5)) (job (n 2)) =>)");
  Engine.SetStrategy(ssBreadthFirst);
  for (int N = 1; N <= 3; ++N) Engine.Assert(u"(job (n " + IntToStr(N) + u"))");
  ASSERT_EQ(Order(), u"top:f-2 r:f-1 r:f-2 r:f-3 ");
  for (TActivation* Activation : *Engine.GetAgenda()) Activation->SetStrength(0.5f);
  Engine.SetWatch({cwActivation});
  String Events;
  Engine.OnAddActivation = [&](TObject*, int Index, TActivation* Activation) {
    Events += IntToStr(Index) + Activation->GetRule()->GetRuleName() + u" ";
  };
  Engine.SetStrategy(ssBreadthFirst);
  EXPECT_EQ(Events, u"") << "the same strategy changes nothing";

  // Each one re-added in the old order goes ahead of its equals: the
  // search probes the equal below the top.
  Engine.SetStrategy(ssDepthFirst);
  EXPECT_EQ(Order(), u"top:f-2 r:f-3 r:f-2 r:f-1 ");
  EXPECT_EQ(Events, u"0top 1r 1r 1r ");
  EXPECT_EQ(Printed,
            u"==> Activation: 5 top : f-2 (1.0000)\r\n==> Activation: 0 r : f-1 (1.0000)\r\n"
            u"==> Activation: 0 r : f-2 (1.0000)\r\n==> Activation: 0 r : f-3 (1.0000)\r\n");
  for (TActivation* Activation : *Engine.GetAgenda()) EXPECT_EQ(Activation->GetStrength(), 1.0f);
  // The terminal node holds what the agenda holds.
  TPatternMatchTerminalNode* Node = Engine.GetAgenda()->GetActivations(1)->GetNode();
  ASSERT_EQ(Node->GetActivationCount(), 3);
  for (int I = 0; I < 3; ++I) EXPECT_TRUE(Engine.GetAgenda()->Contains(Node->GetActivation(I)));

  // The re-sorted activations still leave with their facts.
  Printed.clear();
  Engine.Retract(2);
  EXPECT_EQ(Order(), u"r:f-3 r:f-1 ");
  EXPECT_EQ(Printed, u"<== Activation: r : f-2\r\n<== Activation: top : f-2\r\n");

  // A change from an action re-sorts around the activation being fired,
  // which stays the firing code's.
  Rule(u"r")->OnFire = [this](TRule*, TTavoContext*) {
    Engine.SetStrategy(Engine.GetStrategy() == ssDepthFirst ? ssBreadthFirst : ssDepthFirst);
  };
  Engine.SetWatch({});
  EXPECT_EQ(Engine.Run(), 2);
  EXPECT_EQ(Engine.GetAgendaCount(), 0);
  EXPECT_EQ(Engine.GetCurrentAgendaItem(), nullptr);
}

TEST_F(TRunCycleTest, SalienceEvaluatedEveryCycleReordersAfterEachFiring) {
  Engine.Parse(
      u"(defglobal ?*boost* = 0)"
      u"(defrule plain (declare (salience 5)) (job (n plain)) => (printout t \"plain \"))"
      u"(defrule boosted (declare (salience ?*boost*)) (job (n boosted)) => (printout t \"boosted \"))"
      u"(defrule booster (declare (salience 10)) (job (n booster)) => (bind ?*boost* 20)"
      u"  (printout t \"booster \"))");
  for (TSalience When : {sActivate, sEveryTime}) {
    Engine.Reset();
    Printed.clear();
    Engine.SetEvalSalience(When);
    for (const char16_t* Fact : {u"(job (n plain))", u"(job (n boosted))", u"(job (n booster))"}) Engine.Assert(Fact);
    EXPECT_EQ(Engine.Run(), 3);
    EXPECT_EQ(Printed, When == sActivate ? u"booster plain boosted " : u"booster boosted plain ");
  }
}

TEST_F(TRunCycleTest, ASalienceThatFailsWhileReorderingLosesNoActivation) {
  Engine.Parse(
      u"(defglobal ?*s* = 1)"
      u"(defrule spoil (declare (salience (+ ?*s* 0))) (job (n ?n)) => (bind ?*s* x))");
  for (int N = 1; N <= 3; ++N) Engine.Assert(u"(job (n " + IntToStr(N) + u"))");
  Engine.SetEvalSalience(sEveryTime);
  EXPECT_EQ(FailureOf([&] { Engine.Run(); }), u"Not a numeric type.  Value (x) is a dtAtom type");
  EXPECT_EQ(Engine.GetAgendaCount(), 2);
  Engine.Retract(1);
  EXPECT_EQ(Order(), u"spoil:f-2 ") << "still withdrawn with its fact";
  Engine.SetEvalSalience(sActivate);
  EXPECT_EQ(Engine.Run(), 1);
}

TEST_F(TRunCycleTest, AFiringLimitKeepsTheRestAndTheFocus) {
  Engine.Parse(u"(defrule r (job (n ?n)) => (printout t ?n))");
  for (int N = 1; N <= 4; ++N) Engine.Assert(u"(job (n " + IntToStr(N) + u"))");
  EXPECT_EQ(Engine.Run(0), 0);
  EXPECT_EQ(Log, u"end 0;");
  EXPECT_EQ(Engine.Run(3), 3);
  EXPECT_EQ(Printed, u"432");
  EXPECT_EQ(Order(), u"r:f-1 ");
  EXPECT_EQ(Engine.GetFocusStack().ToNamesString(), u"MAIN");
  EXPECT_FALSE(Engine.GetHalt());
  EXPECT_EQ(Engine.Run(), 1);
  EXPECT_EQ(Engine.GetFocusStack().Count(), 0);
}

TEST_F(TRunCycleTest, HaltLetsTheRuleFinishAndCountsItsFiring) {
  Engine.Parse(
      u"(defrule stop (declare (salience 1)) (job (n 1)) => (halt) (printout t \"finished \"))"
      u"(defrule next (job (n 1)) => (printout t \"next \"))");
  Engine.Assert(u"(job (n 1))");
  EXPECT_EQ(Engine.Run(), 1);
  EXPECT_EQ(Printed, u"finished ");
  EXPECT_EQ(Engine.GetFocusStack().ToNamesString(), u"MAIN") << "a halt leaves the focus as it is";
  EXPECT_EQ(Engine.Run(), 1) << "the next run does not inherit the halt";
  EXPECT_EQ(Printed, u"finished next ");
}

TEST_F(TRunCycleTest, AFailingActionLeavesTheRunWithoutEndingItAndFreesItsActivation) {
  Engine.Parse(u"(defrule bad (declare (salience 1)) (job (n ?n)) => (printout t \"bad \")) (defrule good (job) =>)");
  Rule(u"bad")->OnFire = [](TRule*, TTavoContext*) { throw ETavoException(u"broken"); };
  Engine.Assert(u"(job (n 1))");
  Engine.SetWatch({cwActivation, cwStatistics});
  Printed.clear();
  EXPECT_EQ(FailureOf([&] { Engine.Run(); }), u"broken");
  EXPECT_EQ(Log, u"") << "no EndInference";
  EXPECT_EQ(Printed, u"<== Activation: bad : f-1\r\n") << "freed, and so withdrawn; no statistics";
  EXPECT_EQ(Engine.GetCurrentAgendaItem(), nullptr);
  EXPECT_EQ(Engine.GetStatNumRulesFired(), 0) << "the failed firing does not count";
  EXPECT_EQ(Order(), u"good:f-1 ");
  EXPECT_EQ(Engine.GetFocusStack().ToNamesString(), u"MAIN");
  // The lock is free for another thread, and the engine runs on.
  std::async(std::launch::async, [&] {
    Engine.Lock();
    Engine.Unlock();
  }).get();
  Engine.SetWatch({});
  EXPECT_EQ(Engine.Run(), 1);
  EXPECT_EQ(Log, u"end 1;");
}

TEST_F(TRunCycleTest, AFiredRuleIsToldBeforeItsActivationLeavesTheAgenda) {
  Engine.Parse(
      u"(defrule first (declare (salience 1)) (job (n 1)) => (assert (job (n 2))))"
      u"(defrule second (job (n ?n)) =>)");
  String Events;
  Engine.OnAddActivation = [&](TObject*, int Index, TActivation* Activation) {
    Events += u"add " + IntToStr(Index) + u" " + Activation->GetRule()->GetRuleName() + u"; ";
  };
  Engine.OnRemoveActivation = [&](TObject* Sender, int Index, TActivation* Activation) {
    EXPECT_EQ(static_cast<TInferenceEngine*>(Sender)->GetAgenda()->GetActivations(Index), Activation);
    Events += u"remove " + IntToStr(Index) + u" " + Activation->GetRule()->GetRuleName() + u"; ";
  };
  Engine.OnRuleFired = [&](TObject*, TRule* Fired) { Events += u"fired " + Fired->GetRuleName() + u"; "; };
  Engine.Assert(u"(job (n 1))");
  EXPECT_EQ(Events, u"add 0 first; add 1 second; ");
  Events.clear();
  Engine.SetWatch({cwRule, cwActivation});
  EXPECT_EQ(Engine.Run(1), 1);
  EXPECT_EQ(Events, u"add 1 second; fired first; remove 0 first; ");
  EXPECT_EQ(Printed,
            u"FIRE 0 first f-1\r\n==> Activation: 0 second : f-2 (1.0000)\r\n"
            u"<== Activation: first : f-1\r\n");
}

TEST_F(TRunCycleTest, AnActionThatRetractsItsOwnFactFinishesAndIsFreedOnce) {
  Engine.Parse(u"(defrule eat ?j <- (job (n ?n)) => (retract ?j) (printout t \"ate \" ?n \" \"))");
  Engine.Assert(u"(job (n 1))");
  Engine.Assert(u"(job (n 2))");
  Engine.SetWatch({cwActivation});
  EXPECT_EQ(Engine.Run(), 2);
  EXPECT_EQ(Printed,
            u"<== Activation: eat : f-2\r\nate 2 <== Activation: eat : f-1\r\nate 1 ")
      << "withdrawn once, by the retraction";
}

TEST_F(TRunCycleTest, AOneshotRuleTakesItsWaitingActivationsWithItWhenItFires) {
  Engine.Parse(u"(defrule once (declare (oneshot TRUE)) (job (n ?n)) => (printout t \"once \" ?n \" \"))");
  for (int N = 1; N <= 3; ++N) Engine.Assert(u"(job (n " + IntToStr(N) + u"))");
  Engine.SetWatch({cwActivation});
  EXPECT_EQ(Engine.Run(), 1);
  EXPECT_EQ(Printed,
            u"once 3 <== Activation: once : f-3\r\n<== Activation: once : f-2\r\n<== Activation: once : f-1\r\n");
  Engine.Reset();
  Engine.Assert(u"(job (n 4))");
  EXPECT_EQ(Engine.GetAgendaCount(), 1) << "a reset lets it fire again";
}

TEST_F(TRunCycleTest, AFocusPushedDuringAFiringTakesTheLoopToThatModule) {
  IFactTemplate Job = Engine.FindFactTemplate(u"job");
  IModule Main = Engine.GetCurrentModule();
  Engine.Parse(u"(defmodule SIDE)");
  IModule Side = Engine.GetCurrentModule();
  // SIDE shares the template, so a job asserted in MAIN reaches its rules.
  Side->GetFactTemplates()->Add(u"job", Job);
  Engine.Parse(u"(defrule SIDE::woken (declare (auto-focus TRUE)) (job (n ?n)) => (printout t \"side \" ?n \" \"))");
  Engine.SetCurrentModule(Main);
  Engine.Parse(u"(defrule MAIN::start => (assert (job (n 1))) (printout t \"main \"))");
  Engine.Reset();
  Engine.SetWatch({cwFocus});
  // The assertion leaves MAIN current with SIDE on top, and MAIN's agenda
  // empty: SIDE's agenda is the one to run, not the focus to pop.
  EXPECT_EQ(Engine.Run(), 2);
  EXPECT_EQ(Printed, u"==> Focus SIDE from MAIN\r\nmain side 1 ==> Focus SIDE to MAIN\r\n<== Focus MAIN\r\n");
}

TEST_F(TRunCycleTest, ANegatedPatternShowsTheNullFactAlikeInEveryText) {
  Engine.Parse(u"(defrule alone (job (n ?n)) (not (job (x ?n))) =>)");
  Engine.Assert(u"(job (n 1))");
  EXPECT_EQ(Engine.GetAgenda()->ToString(), u"0 alone : f-1, f--1 (1.0000)\r\n");
  Engine.SetWatch({cwActivation, cwRule});
  EXPECT_EQ(Engine.Run(), 1);
  EXPECT_EQ(Printed, u"FIRE 0 alone f-1, f--1\r\n<== Activation: alone : f-1, f--1\r\n");
}

TEST_F(TRunCycleTest, StatisticsSumFactsAndActivationsAfterEachFiring) {
  Engine.Parse(u"(defrule grow (job (n ?n&:(< ?n 3))) => (assert (job (n (+ ?n 1)))))");
  Engine.Assert(u"(job (n 1))");
  Engine.SetWatch({cwStatistics});
  // Facts after the firings: 3, 4 (initial fact included); agenda: 1, 0.
  Engine.Readings = {100.0, 102.5};
  EXPECT_EQ(Engine.Run(), 2);
  EXPECT_EQ(Printed,
            u"2 rules fired.     Run time is 2.5000 seconds\r\n0.8000 rules per second\r\n"
            u"3.5000 mean number of facts (4 maximum)\r\n0.5000 mean number of activations (1 maximum)\r\n");
  EXPECT_DOUBLE_EQ(Engine.GetStatRunTime(), 2.5);
  EXPECT_EQ(Engine.GetStatMaxFacts(), 4);
  EXPECT_EQ(Engine.GetStatMaxActivations(), 1);

  // A run of no measurable time gives the count as its rate.
  Engine.Reset();
  Engine.Assert(u"(job (n 2))");
  Printed.clear();
  Engine.Readings = {7.0, 7.0};
  EXPECT_EQ(Engine.Run(), 1);
  EXPECT_EQ(Printed,
            u"1 rules fired.     Run time is 0.0000 seconds\r\n1 rules per second\r\n"
            u"3.0000 mean number of facts (3 maximum)\r\n0.0000 mean number of activations (1 maximum)\r\n");

  // Without the watch nothing is gathered and nothing printed.
  Engine.SetWatch({});
  Engine.Reset();
  Engine.Assert(u"(job (n 1))");
  Printed.clear();
  EXPECT_EQ(Engine.Run(), 2);
  EXPECT_EQ(Printed, u"");
  EXPECT_EQ(Engine.GetStatMeanFacts(), 0.0f);
  EXPECT_EQ(Engine.GetStatMaxFacts(), 2) << "the count at the start";
}

}  // namespace
}  // namespace tavo
