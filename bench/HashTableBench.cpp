// The string table beside std::unordered_map on the same rule-language keys:
// insert into an empty table, lookups that hit and miss, and removal (each
// key removed and added back, so the table size stays put).
#include <benchmark/benchmark.h>

#include <unordered_map>
#include <vector>

#include "common/MekHashTables.h"

using namespace tavo;

namespace {

// Identifiers of 4 to 20 characters such as "temperature-7" and
// "need-valve-12"; Salt gives a disjoint set of the same shape.
std::vector<String> MakeKeys(int Count, int Salt) {
  static const char16_t* const Stems[] = {
      u"temperature", u"need-valve",     u"pump", u"pressure-high", u"alarm",
      u"flow-rate",   u"sensor-reading", u"goal", u"tank-level",    u"status"};
  std::vector<String> Keys;
  Keys.reserve(size_t(Count));
  for (int I = 0; I < Count; ++I) {
    String Key = Stems[I % 10];
    Key += u'-';
    Key += IntToStr(I / 10 * 2 + Salt);
    Keys.push_back(std::move(Key));
  }
  return Keys;
}

using TStdMap = std::unordered_map<String, int>;

void BM_InsertTavo(benchmark::State& State) {
  const std::vector<String> Keys = MakeKeys(int(State.range(0)), 0);
  for (auto _ : State) {
    TMekStringHashTable<int> Table;
    for (size_t I = 0; I < Keys.size(); ++I) Table.Add(Keys[I], int(I));
    benchmark::DoNotOptimize(Table.Count());
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

void BM_InsertStd(benchmark::State& State) {
  const std::vector<String> Keys = MakeKeys(int(State.range(0)), 0);
  for (auto _ : State) {
    TStdMap Map;
    for (size_t I = 0; I < Keys.size(); ++I) Map.emplace(Keys[I], int(I));
    benchmark::DoNotOptimize(Map.size());
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

template <bool Hit>
void BM_LookupTavo(benchmark::State& State) {
  const std::vector<String> Keys = MakeKeys(int(State.range(0)), 0);
  const std::vector<String> Probes = Hit ? Keys : MakeKeys(int(State.range(0)), 1);
  TMekStringHashTable<int> Table;
  for (size_t I = 0; I < Keys.size(); ++I) Table.Add(Keys[I], int(I));
  for (auto _ : State)
    for (const String& Key : Probes) benchmark::DoNotOptimize(Table.Find(Key));
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

template <bool Hit>
void BM_LookupStd(benchmark::State& State) {
  const std::vector<String> Keys = MakeKeys(int(State.range(0)), 0);
  const std::vector<String> Probes = Hit ? Keys : MakeKeys(int(State.range(0)), 1);
  TStdMap Map;
  for (size_t I = 0; I < Keys.size(); ++I) Map.emplace(Keys[I], int(I));
  for (auto _ : State)
    for (const String& Key : Probes) benchmark::DoNotOptimize(Map.find(Key));
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

void BM_RemoveAddTavo(benchmark::State& State) {
  const std::vector<String> Keys = MakeKeys(int(State.range(0)), 0);
  TMekStringHashTable<int> Table;
  for (size_t I = 0; I < Keys.size(); ++I) Table.Add(Keys[I], int(I));
  for (auto _ : State)
    for (const String& Key : Keys) {
      Table.Remove(Key);
      Table.Add(Key, 1);
    }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

void BM_RemoveAddStd(benchmark::State& State) {
  const std::vector<String> Keys = MakeKeys(int(State.range(0)), 0);
  TStdMap Map;
  for (size_t I = 0; I < Keys.size(); ++I) Map.emplace(Keys[I], int(I));
  for (auto _ : State)
    for (const String& Key : Keys) {
      Map.erase(Key);
      Map.emplace(Key, 1);
    }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

}  // namespace

#define TABLE_SIZES Arg(64)->Arg(1024)->Arg(16384)

BENCHMARK(BM_InsertTavo)->TABLE_SIZES;
BENCHMARK(BM_InsertStd)->TABLE_SIZES;
BENCHMARK_TEMPLATE(BM_LookupTavo, true)->TABLE_SIZES;
BENCHMARK_TEMPLATE(BM_LookupStd, true)->TABLE_SIZES;
BENCHMARK_TEMPLATE(BM_LookupTavo, false)->TABLE_SIZES;
BENCHMARK_TEMPLATE(BM_LookupStd, false)->TABLE_SIZES;
BENCHMARK(BM_RemoveAddTavo)->TABLE_SIZES;
BENCHMARK(BM_RemoveAddStd)->TABLE_SIZES;
