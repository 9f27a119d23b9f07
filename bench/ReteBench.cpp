// The matcher driven through the object interface: facts per second
// through a three-pattern join keyed on a slot, through a negated join, and
// pairs per second through a join whose only test is a call (no key), and
// the bytes that each token stored in a join memory keeps alive.
#include <benchmark/benchmark.h>

#include "bench/HeapCounter.h"
#include "engine/InferenceEngine.h"

using namespace tavo;

using heapcounter::LiveBytes;

namespace {

struct TSlotTest {
  const char16_t* Slot;
  ITavoValue Value;
};

ITavoValue Var(const char16_t* Name) { return Make<TTavoValue>(String(Name), dtVariable); }

// An engine with the templates a(x), b(y z), c(w).
std::unique_ptr<TInferenceEngine> NewEngine() {
  auto Engine = std::make_unique<TInferenceEngine>();
  Engine->Parse(u"(deftemplate a (slot x)) (deftemplate b (slot y) (slot z)) (deftemplate c (slot w))");
  return Engine;
}

void AddRule(TInferenceEngine& Engine, std::initializer_list<std::pair<const char16_t*, std::vector<TSlotTest>>> Patterns,
             std::initializer_list<int> Negations = {}) {
  auto* Rule = new TRule(&Engine);
  auto Negation = Negations.begin();
  for (const auto& [Template, Tests] : Patterns) {
    int Count = Negation != Negations.end() ? *Negation++ : 0;
    auto* Pattern = new TTavoPattern(Rule, Template, Engine.FindFactTemplate(Template), Count);
    for (const TSlotTest& Test : Tests) Pattern->AddTest(Test.Slot, Test.Value, NoSubIndex, true, false);
    Rule->GetPatterns().Add(Pattern);
  }
  Engine.GetRules()->Add(Rule);
}

void Assert(TInferenceEngine& Engine, const IFactTemplate& Template, const char16_t* Slot, int Value) {
  IFact Fact = Template->NewFact();
  Fact->SetValue(Slot, Make<TTavoValue>(Value, dtInteger));
  Engine.Assert(Fact);
}

}  // namespace

static void BM_ThreePatternJoinWithKey(benchmark::State& State) {
  const int Count = int(State.range(0));
  int Activations = 0;
  for (auto _ : State) {
    State.PauseTiming();
    auto Engine = NewEngine();
    AddRule(*Engine, {{u"a", {{u"x", Var(u"v")}}}, {u"b", {{u"y", Var(u"v")}}}, {u"c", {{u"w", Var(u"v")}}}});
    IFactTemplate A = Engine->FindFactTemplate(u"a"), B = Engine->FindFactTemplate(u"b"),
                  C = Engine->FindFactTemplate(u"c");
    State.ResumeTiming();
    for (int I = 0; I < Count; ++I) Assert(*Engine, A, u"x", I);
    for (int I = 0; I < Count; ++I) Assert(*Engine, B, u"y", I);
    for (int I = 0; I < Count; ++I) Assert(*Engine, C, u"w", I);
    State.PauseTiming();
    Activations = Engine->GetAgendaCount();
    Engine.reset();
    State.ResumeTiming();
  }
  State.SetItemsProcessed(State.iterations() * Count * 3);
  State.counters["activations"] = Activations;
}
BENCHMARK(BM_ThreePatternJoinWithKey)->Arg(20000)->Unit(benchmark::kMillisecond);

static void BM_NegatedJoin(benchmark::State& State) {
  const int Count = int(State.range(0));
  int Activations = 0;
  for (auto _ : State) {
    State.PauseTiming();
    auto Engine = NewEngine();
    AddRule(*Engine, {{u"a", {{u"x", Var(u"v")}}}, {u"b", {{u"y", Var(u"v")}}}}, {0, 1});
    IFactTemplate A = Engine->FindFactTemplate(u"a"), B = Engine->FindFactTemplate(u"b");
    State.ResumeTiming();
    // Each a activates; each b then withdraws one.
    for (int I = 0; I < Count; ++I) Assert(*Engine, A, u"x", I);
    for (int I = 0; I < Count; I += 2) Assert(*Engine, B, u"y", I);
    State.PauseTiming();
    Activations = Engine->GetAgendaCount();
    Engine.reset();
    State.ResumeTiming();
  }
  State.SetItemsProcessed(State.iterations() * (Count + Count / 2));
  State.counters["activations"] = Activations;
}
BENCHMARK(BM_NegatedJoin)->Arg(40000)->Unit(benchmark::kMillisecond);

static void BM_UnkeyedJoin(benchmark::State& State) {
  const int Count = int(State.range(0));
  int Activations = 0;
  for (auto _ : State) {
    State.PauseTiming();
    auto Engine = NewEngine();
    // The only test of the join is a call: every pair is tried.
    ITavoValue Test = Make<TTavoValue>(Engine->ParseFunCall(u"(= ?z ?v)"));
    AddRule(*Engine, {{u"a", {{u"x", Var(u"v")}}}, {u"b", {{u"z", Var(u"z")}, {u"z", Test}}}});
    IFactTemplate A = Engine->FindFactTemplate(u"a"), B = Engine->FindFactTemplate(u"b");
    State.ResumeTiming();
    for (int I = 0; I < Count; ++I) Assert(*Engine, A, u"x", I);
    for (int I = 0; I < Count; ++I) Assert(*Engine, B, u"z", I);
    State.PauseTiming();
    Activations = Engine->GetAgendaCount();
    Engine.reset();
    State.ResumeTiming();
  }
  State.SetItemsProcessed(State.iterations() * int64_t(Count) * Count);
  State.counters["activations"] = Activations;
}
BENCHMARK(BM_UnkeyedJoin)->Arg(1000)->Unit(benchmark::kMillisecond);

// The same facts asserted with and without a rule whose join stores each
// of them: the difference is what the stored tokens keep alive.
static void BM_BytesPerStoredToken(benchmark::State& State) {
  const int Count = int(State.range(0));
  double PerToken = 0;
  for (auto _ : State) {
    int64_t Cost[2];
    for (int WithRule = 0; WithRule < 2; ++WithRule) {
      auto Engine = NewEngine();
      if (WithRule) AddRule(*Engine, {{u"a", {{u"x", Var(u"v")}}}, {u"b", {{u"y", Var(u"v")}}}});
      IFactTemplate A = Engine->FindFactTemplate(u"a");
      int64_t Before = LiveBytes.load();
      for (int I = 0; I < Count; ++I) Assert(*Engine, A, u"x", I);
      Cost[WithRule] = LiveBytes.load() - Before;
    }
    PerToken = double(Cost[1] - Cost[0]) / Count;
  }
  State.counters["bytes_per_token"] = PerToken;
}
BENCHMARK(BM_BytesPerStoredToken)->Arg(100000)->Iterations(1)->Unit(benchmark::kMillisecond);
