// The evaluator and what definitions cost: allocations per deffunction call,
// calls per second, and the bytes and time that parsing many deffunctions
// takes. Live bytes and allocations are counted by replacing operator new.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "engine/InferenceEngine.h"
#include "language/TavoClipsParser.h"

using namespace tavo;

namespace {

std::atomic<int64_t> LiveBytes{0};
std::atomic<int64_t> Allocations{0};

}  // namespace

void* operator new(std::size_t Size) {
  void* P = std::malloc(Size + 16);
  if (!P) throw std::bad_alloc();
  *static_cast<std::size_t*>(P) = Size;
  LiveBytes += int64_t(Size);
  ++Allocations;
  return static_cast<char*>(P) + 16;
}
void operator delete(void* P) noexcept {
  if (!P) return;
  char* Block = static_cast<char*>(P) - 16;
  LiveBytes -= int64_t(*reinterpret_cast<std::size_t*>(Block));
  std::free(Block);
}
void operator delete(void* P, std::size_t) noexcept { operator delete(P); }

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
