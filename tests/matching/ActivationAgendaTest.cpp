// Placing activations: by descending salience, among equals by the
// strategy at the ends and by the probe of the binary search in between.
#include "matching/ActivationAgenda.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

struct TAgendaTest : testing::Test {
  TAgendaTest() {
    Engine.Parse(
        u"(deftemplate s (slot n))"
        u"(defrule s20 (declare (salience 20)) (s (n 20)) =>)"
        u"(defrule s10 (declare (salience 10)) (s (n 10)) =>)"
        u"(defrule s0 (s (n 0)) =>)");
    Engine.OnAddActivation = [this](TObject*, int Index, TActivation*) { Placed = Index; };
  }
  // The index the activation of a new fact (s (n N)) was placed at.
  int Place(int Salience) {
    static int Unique = 0;
    Engine.Assert(u"(s (n " + IntToStr(Salience) + u") (x " + IntToStr(++Unique) + u"))");
    return Placed;
  }
  String Order() {
    String Result;
    for (TActivation* Activation : *Engine.GetAgenda()) Result += Activation->GetRule()->GetRuleName() + u" ";
    return Result;
  }
  TInferenceEngine Engine;
  int Placed = -2;
};

TEST_F(TAgendaTest, EqualsGoFirstDepthFirstAndLastBreadthFirst) {
  Engine.Parse(u"(deftemplate s (slot n) (slot x))");
  Engine.SetStrategy(ssDepthFirst);
  Place(0);
  EXPECT_EQ(Place(0), 0) << "B ahead of A";
  EXPECT_EQ(Engine.GetAgenda()->GetActivations(0)->GetToken()->GetFact()->GetID(), 2);
  TInferenceEngine Other;
  Other.Parse(u"(deftemplate s (slot n) (slot x)) (defrule s0 (s (n 0)) =>)");
  Other.SetStrategy(ssBreadthFirst);
  Other.Assert(u"(s (n 0) (x 1))");
  Other.Assert(u"(s (n 0) (x 2))");
  EXPECT_EQ(Other.GetAgenda()->GetActivations(0)->GetToken()->GetFact()->GetID(), 1) << "A ahead of B";
}

TEST_F(TAgendaTest, TheBinarySearchStopsAtTheFirstEqualItProbes) {
  Engine.Parse(u"(deftemplate s (slot n) (slot x))");
  for (TSearchStrategy Strategy : {ssDepthFirst, ssBreadthFirst}) {
    Engine.RetractFacts();
    Engine.GetFacts()->Clear();
    Engine.SetStrategy(Strategy);
    Place(20);
    Place(0);
    EXPECT_EQ(Place(10), 1) << "10 into [20, 0]";
    Place(10);
    EXPECT_EQ(Order(), Strategy == ssDepthFirst ? u"s20 s10 s10 s0 " : u"s20 s10 s10 s0 ");
    // [20, 10, 10, 0]: the first probe, index 1, is an equal.
    EXPECT_EQ(Place(10), 1);
  }
  Engine.RetractFacts();
  Engine.GetFacts()->Clear();
  Place(10);
  Place(0);
  EXPECT_EQ(Place(10), 0) << "10 into [10, 0], breadth first, by the probe";
}

TEST_F(TAgendaTest, EntriesLeaveByIndexOrByActivationAndTellTheirText) {
  Engine.Parse(u"(deftemplate s (slot n) (slot x))");
  for (int I = 0; I < 40; ++I) Place(I % 3 == 0 ? 20 : I % 3 == 1 ? 10 : 0);
  TActivationAgenda* Agenda = Engine.GetAgenda();
  ASSERT_EQ(Agenda->Count(), 40);
  int Index = 0;
  for (TActivation* Activation : *Agenda) EXPECT_EQ(Agenda->IndexOfData(Activation), Index++);
  TActivation* Middle = Agenda->GetActivations(17);
  EXPECT_TRUE(Agenda->GetFreeData());
  TActivation* Taken = Agenda->Extract(17);
  EXPECT_EQ(Taken, Middle);
  EXPECT_TRUE(Agenda->GetFreeData());
  EXPECT_EQ(Agenda->IndexOfData(Taken), -1);
  EXPECT_EQ(Agenda->Count(), 39);
  delete Taken;
  EXPECT_EQ(Agenda->GetString(0).substr(0, 8), u"20 s20 :");
  // An empty agenda with an engine appends; so does one without.
  TTavoAgenda Empty;
  EXPECT_EQ(Empty.FindInsertion(nullptr), -1);
}


// An agenda that places each activation where the test says.
class TPlacedAgenda : public TActivationAgenda {
 public:
  int Next = -1;
  int FindInsertion(TActivation*) override { return Next; }
};

// The tree behind the agenda against a plain list: entries placed and taken
// anywhere, by index and by activation, keep their order, their indices and
// the parent links that iteration and lookups by activation walk.
TEST(AgendaTreeTest, AgreesWithAPlainListThroughRandomPlacingAndWithdrawing) {
  TPlacedAgenda Agenda;
  std::vector<TActivation*> Model;
  std::mt19937 Random(11);
  for (int Step = 0; Step < 6000; ++Step) {
    const int Count = int(Model.size());
    const unsigned Choice = Random() % 10;
    if (Count == 0 || Choice < ((Step / 1500) % 2 == 0 ? 6u : 3u)) {
      auto* Activation = new TActivation(nullptr, nullptr, nullptr);
      const int Index = int(Random() % unsigned(Count + 1));
      Agenda.Next = Index;
      ASSERT_EQ(Agenda.Add(Activation), Index);
      Model.insert(Model.begin() + Index, Activation);
    } else if (Choice < 8) {
      TActivation* Activation = Model[Random() % unsigned(Count)];
      ASSERT_TRUE(Agenda.ExtractData(Activation));
      ASSERT_FALSE(Agenda.Contains(Activation));
      Model.erase(std::find(Model.begin(), Model.end(), Activation));
      delete Activation;
    } else {
      const int Index = int(Random() % unsigned(Count));
      ASSERT_EQ(Agenda.Extract(Index), Model[size_t(Index)]);
      delete Model[size_t(Index)];
      Model.erase(Model.begin() + Index);
    }
    ASSERT_EQ(Agenda.Count(), int(Model.size()));
    if (!Model.empty()) {
      const int Probe = int(Random() % Model.size());
      ASSERT_EQ(Agenda.IndexOfData(Model[size_t(Probe)]), Probe);
      ASSERT_EQ(Agenda.GetActivations(Probe), Model[size_t(Probe)]);
    }
    if (Step % 50 == 0) {
      std::vector<TActivation*> Walked;
      for (TActivation* Activation : Agenda) Walked.push_back(Activation);
      ASSERT_EQ(Walked, Model) << "after step " << Step;
    }
  }
}

}  // namespace
}  // namespace tavo

namespace tavo {
namespace {

TEST_F(TAgendaTest, AnAgendaWithoutAnEngineKeepsOrderAndCopiesLeaveTheOriginalWhole) {
  Engine.Parse(u"(deftemplate s (slot n) (slot x))");
  Place(0);
  Place(20);
  Place(10);
  ASSERT_EQ(Order(), u"s20 s10 s0 ");
  // A copy of the entries, for re-sorting: the engine's agenda still owns them.
  TTavoAgenda Copy;
  Copy.SetFreeData(false);
  for (TActivation* Activation : *Engine.GetAgenda()) Copy.Add(Activation);
  EXPECT_EQ(Copy.GetActivations(2)->GetRule()->GetRuleName(), u"s0") << "appended in arrival order";
  EXPECT_EQ(Copy.IndexOfData(Copy.GetActivations(1)), -1) << "found by reference in its first agenda only";
  EXPECT_EQ(Engine.GetAgenda()->IndexOfData(Copy.GetActivations(1)), 1);
  Copy.Extract(0);
  Copy.Clear();
  EXPECT_EQ(Order(), u"s20 s10 s0 ");
  TActivation* Last = Engine.GetAgenda()->Extract(2);
  EXPECT_EQ(Last->GetRule()->GetRuleName(), u"s0");
  delete Last;
  EXPECT_EQ(Order(), u"s20 s10 ");
}

}  // namespace
}  // namespace tavo
