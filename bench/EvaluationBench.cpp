// The evaluator and what definitions cost: allocations per deffunction call,
// calls per second, and the bytes and time that parsing many deffunctions
// takes. Live bytes and allocations are counted by replacing operator new.
#include <benchmark/benchmark.h>

#include "bench/HeapCounter.h"
#include "engine/InferenceEngine.h"
#include "language/TavoClipsParser.h"

using namespace tavo;

using heapcounter::LiveBytes;
using heapcounter::Allocations;

// One call of a two-statement deffunction: the counter says how many times a
// call goes to the heap, its values included (they come from the thread's
// cache of value blocks once it is warm).
static void BM_DeffunctionCall(benchmark::State& State) {
  TInferenceEngine Engine;
  Engine.Parse(u"(deffunction f (?x ?y) (bind ?z (+ ?x ?y)) (* ?z 2))");
  IFunCall Call = Engine.ParseFunCall(u"(f 3 4)");
  TTavoContext* Context = Engine.GetContext();
  ITavoValue Result;
  Call->Execute(Context, Result);  // binds the call and warms the pools
  int64_t Before = Allocations.load();
  for (auto _ : State) {
    Call->Execute(Context, Result);
    benchmark::DoNotOptimize(Result);
  }
  State.counters["heap_allocs_per_call"] = double(Allocations.load() - Before) / double(State.iterations());
}
BENCHMARK(BM_DeffunctionCall);

static void BM_RecursiveFib(benchmark::State& State) {
  TInferenceEngine Engine;
  Engine.Parse(u"(deffunction fib (?n) (if (< ?n 2) then ?n else (+ (fib (- ?n 1)) (fib (- ?n 2)))))");
  IFunCall Call = Engine.ParseFunCall(u"(fib 20)");
  TTavoContext* Context = Engine.GetContext();
  ITavoValue Result;
  for (auto _ : State) {
    Call->Execute(Context, Result);
    benchmark::DoNotOptimize(Result);
  }
  // (fib 20) makes 21,891 calls.
  State.SetItemsProcessed(State.iterations() * 21891);
}
BENCHMARK(BM_RecursiveFib)->Unit(benchmark::kMillisecond);

static void BM_ParseDeffunctions(benchmark::State& State) {
  const int Count = int(State.range(0));
  String Text;
  for (int I = 0; I < Count; ++I)
    Text += u"(deffunction f" + IntToStr(I) + u" (?x ?y) (bind ?z (+ ?x ?y " + IntToStr(I) + u")) (* ?z 2))\n";
  double BytesPerFunction = 0;
  for (auto _ : State) {
    State.PauseTiming();
    auto Engine = std::make_unique<TInferenceEngine>();
    int64_t Before = LiveBytes.load();
    State.ResumeTiming();
    Engine->Parse(Text);
    State.PauseTiming();
    BytesPerFunction = double(LiveBytes.load() - Before) / Count;
    Engine.reset();
    State.ResumeTiming();
  }
  State.SetItemsProcessed(State.iterations() * Count);
  State.counters["bytes_per_deffunction"] = BytesPerFunction;
}
BENCHMARK(BM_ParseDeffunctions)->Arg(8000)->Unit(benchmark::kMillisecond);
