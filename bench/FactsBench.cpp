// The fact base: 100,000 distinct facts of a three-slot template enter the
// list through the engine's own (updating) road, each after the duplicate
// test that Assert makes. Reports facts per second and the bytes each fact
// keeps alive.
#include <benchmark/benchmark.h>

#include "bench/HeapCounter.h"
#include "engine/InferenceEngine.h"

using namespace tavo;

using heapcounter::LiveBytes;

static void BM_AssertDistinctFacts(benchmark::State& State) {
  const int Count = int(State.range(0));
  double BytesPerFact = 0;
  int Collisions = 0;
  for (auto _ : State) {
    State.PauseTiming();
    auto Engine = std::make_unique<TInferenceEngine>();
    IFactTemplate Template = Make<TFactTemplate>(Engine.get(), u"reading");
    Template->AddSlot(u"sensor", Make<TTavoValue>(String(u"none"), dtAtom));
    Template->AddSlot(u"value", Make<TTavoValue>(0.0));
    Template->AddSlot(u"count", Make<TTavoValue>(0, dtInteger));
    Engine->GetFactTemplates()->Add(u"reading", Template);
    TFacts& Facts = *Engine->GetFacts();
    int64_t Before = LiveBytes.load();
    State.ResumeTiming();

    Facts.SetUpdating(true);
    for (int I = 0; I < Count; ++I) {
      IFact Fact = Template->NewFact();
      Fact->SetValue(u"sensor", Make<TTavoValue>(u"sensor-" + IntToStr(I % 97), dtAtom));
      Fact->SetValue(u"value", Make<TTavoValue>(I * 0.5));
      Fact->SetValue(u"count", Make<TTavoValue>(I, dtInteger));
      if (Facts.FindFact(Fact) >= 0) continue;
      Fact->SetID(Engine->NewFactId());
      Facts.Add(Fact);
    }
    Facts.SetUpdating(false);

    State.PauseTiming();
    // Equal hash codes count as equal facts: a 32-bit hash over this many
    // facts may take one or two distinct facts for duplicates.
    Collisions = Count + 1 - Facts.Count();
    BytesPerFact = double(LiveBytes.load() - Before) / Count;
    Engine.reset();
    State.ResumeTiming();
  }
  State.SetItemsProcessed(State.iterations() * Count);
  State.counters["bytes_per_fact"] = BytesPerFact;
  State.counters["hash_collisions"] = Collisions;
}
BENCHMARK(BM_AssertDistinctFacts)->Arg(100000)->Unit(benchmark::kMillisecond);

static void BM_DuplicateTest(benchmark::State& State) {
  TInferenceEngine Engine;
  IFactTemplate Template = Engine.CreateFactTemplate(u"pair");
  for (int I = 0; I < 10000; ++I) {
    IFact Fact = Template->NewFact();
    IValueVector Items = Make<TValueVector>();
    Items->Add(Make<TTavoValue>(I, dtInteger));
    Fact->SetValue(SDefaultSlotName, Make<TTavoValue>(Items));
    Engine.Assert(Fact);
  }
  IFact Probe = Template->NewFact();
  IValueVector Items = Make<TValueVector>();
  Items->Add(Make<TTavoValue>(5000, dtInteger));
  Probe->SetValue(SDefaultSlotName, Make<TTavoValue>(Items));
  for (auto _ : State) benchmark::DoNotOptimize(Engine.GetFacts()->FindFact(Probe));
}
BENCHMARK(BM_DuplicateTest);
