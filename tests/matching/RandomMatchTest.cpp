// The network against a matcher written here by brute force: random
// assertions and retractions over rules with keyed joins, constants, "~",
// "|", predicates, a test element and multifield variables; after every
// step the agenda must hold exactly the complete matches, each as often as
// it matches.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <tuple>

#include "engine/InferenceEngine.h"

namespace tavo {
namespace {

using TMatch = std::tuple<int, int, int>;  // rule, first fact id, second fact id or -1

struct TFactView {
  int Id;
  char Kind;  // 'a', 'b' or 'c'
  int X = 0, Y = 0;
  std::vector<int> Items;
};

const char16_t* const Rules[] = {
    u"(defrule r0 (a (x ?v) (y ?w)) (b (x ?v)) =>)",
    u"(defrule r1 (a (x 1) (y ?w)) (b (y ~?w)) =>)",
    u"(defrule r2 (a (x 2|3) (y ?w)) =>)",
    u"(defrule r3 (a (x ?v&:(> ?v 2))) (b (x ?u&:(< ?u ?v))) =>)",
    u"(defrule r4 (c (items $?pre 1 $?post)) =>)",
    u"(defrule r5 (a (x ?v)) (test (> ?v 2)) (b (x ?v) (y ~0)) =>)",
};

std::vector<TMatch> BruteForce(const std::vector<TFactView>& Facts) {
  std::vector<TMatch> Result;
  for (const TFactView& A : Facts) {
    if (A.Kind == 'c') {
      for (int Item : A.Items)
        if (Item == 1) Result.emplace_back(4, A.Id, -1);
      continue;
    }
    if (A.Kind != 'a') continue;
    if (A.X == 2 || A.X == 3) Result.emplace_back(2, A.Id, -1);
    for (const TFactView& B : Facts) {
      if (B.Kind != 'b') continue;
      if (A.X == B.X) Result.emplace_back(0, A.Id, B.Id);
      if (A.X == 1 && B.Y != A.Y) Result.emplace_back(1, A.Id, B.Id);
      if (A.X > 2 && B.X < A.X) Result.emplace_back(3, A.Id, B.Id);
      if (A.X > 2 && A.X == B.X && B.Y != 0) Result.emplace_back(5, A.Id, B.Id);
    }
  }
  std::sort(Result.begin(), Result.end());
  return Result;
}

int Number(TFact& Fact, const char16_t* Slot) { return int(Fact.GetValue(Slot)->GetAsInteger()); }

TEST(RandomMatchTest, TheAgendaHoldsExactlyTheCompleteMatchesAfterEveryStep) {
  TInferenceEngine Engine;
  Engine.Parse(u"(deftemplate a (slot x) (slot y)) (deftemplate b (slot x) (slot y)) (deftemplate c (multislot items))");
  std::vector<TRule*> RuleObjects;
  for (const char16_t* Text : Rules) Engine.Parse(Text);
  for (int I = 0; I < 6; ++I) RuleObjects.push_back(Engine.GetRules()->Find(u"r" + IntToStr(I)));
  Engine.Reset();
  std::mt19937 Random(20261123);
  auto Pick = [&](int Count) { return int(Random() % unsigned(Count)); };

  for (int Step = 0; Step < 10000; ++Step) {
    int Facts = Engine.GetFactCount();
    if (Facts > 1 && Pick(10) < 4) {
      // Any fact but the initial one.
      Engine.RetractFact(1 + Pick(Facts - 1));
    } else {
      String Text;
      switch (Pick(3)) {
        case 0:
          Text = u"(a (x " + IntToStr(Pick(5)) + u") (y " + IntToStr(Pick(5)) + u"))";
          break;
        case 1:
          Text = u"(b (x " + IntToStr(Pick(5)) + u") (y " + IntToStr(Pick(5)) + u"))";
          break;
        default:
          Text = u"(c (items";
          for (int N = Pick(4); N > 0; --N) Text += u" " + IntToStr(Pick(3));
          Text += u"))";
      }
      Engine.Assert(Text);
    }

    std::vector<TFactView> View;
    for (int I = 0; I < Engine.GetFactCount(); ++I) {
      TFact& Fact = *Engine.GetFacts()->Get(I);
      String Name = Fact.GetTemplate()->GetTemplateName();
      if (Name == u"c") {
        TFactView Entry{Fact.GetID(), 'c', 0, 0, {}};
        const IValueVector& Items = Fact.GetValue(u"items")->GetAsList();
        for (int J = 0; J < Items->GetValueCount(); ++J) Entry.Items.push_back(int(Items->Get(J)->GetAsInteger()));
        View.push_back(Entry);
      } else if (Name == u"a" || Name == u"b") {
        View.push_back({Fact.GetID(), char(Name[0]), Number(Fact, u"x"), Number(Fact, u"y"), {}});
      }
    }
    std::vector<TMatch> Agenda;
    for (TActivation* Activation : *Engine.GetAgenda()) {
      int Rule = int(std::find(RuleObjects.begin(), RuleObjects.end(), Activation->GetRule()) - RuleObjects.begin());
      const IReteToken& Token = Activation->GetToken();
      // A test element takes no place in the token.
      Agenda.emplace_back(Rule, Token->GetFacts(0)->GetID(), Token->GetCount() > 1 ? Token->GetFacts(1)->GetID() : -1);
    }
    std::sort(Agenda.begin(), Agenda.end());
    ASSERT_EQ(Agenda, BruteForce(View)) << "after step " << Step;
  }
}

}  // namespace
}  // namespace tavo
