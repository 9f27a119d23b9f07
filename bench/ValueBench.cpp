// The value operations that matching leans on: strict equality, hashing,
// making and cloning values.
#include <benchmark/benchmark.h>

#include "core/TavoValue.h"
#include "core/TavoVectors.h"

using namespace tavo;

static void BM_EqualsAtoms(benchmark::State& State) {
  ITavoValue A = Make<TTavoValue>(String(u"temperature-sensor"), dtAtom);
  ITavoValue B = Make<TTavoValue>(String(u"temperature-sensor"), dtAtom);
  for (auto _ : State) benchmark::DoNotOptimize(A->Equals(B));
}
BENCHMARK(BM_EqualsAtoms);

static void BM_EqualsIntegerAgainstFloat(benchmark::State& State) {
  ITavoValue A = Make<TTavoValue>(42, dtInteger);
  ITavoValue B = Make<TTavoValue>(42.0);
  for (auto _ : State) benchmark::DoNotOptimize(A->Equals(B));
}
BENCHMARK(BM_EqualsIntegerAgainstFloat);

static void BM_HashAtom(benchmark::State& State) {
  ITavoValue A = Make<TTavoValue>(String(u"temperature-sensor"), dtAtom);
  for (auto _ : State) benchmark::DoNotOptimize(A->GetHashCode());
}
BENCHMARK(BM_HashAtom);

static void BM_MakeInteger(benchmark::State& State) {
  int32_t I = 0;
  for (auto _ : State) benchmark::DoNotOptimize(Make<TTavoValue>(I++, dtInteger));
  // An integer has nothing out of line; a text's record is shared.
  State.counters["value_bytes"] = double(sizeof(TTavoValue));
}
BENCHMARK(BM_MakeInteger);

static void BM_CloneListOfEight(benchmark::State& State) {
  IValueVector Vector = Make<TValueVector>();
  for (int I = 0; I < 8; ++I) Vector->Add(Make<TTavoValue>(I, dtInteger));
  ITavoValue List = Make<TTavoValue>(Vector);
  for (auto _ : State) benchmark::DoNotOptimize(Make<TTavoValue>(List));
}
BENCHMARK(BM_CloneListOfEight);
