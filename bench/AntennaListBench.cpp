// Util::GetAntennaList on the TV in TVSIM_DB, as the popup calls it once at start:
// the cached service mode is forgotten before each call.
#include <benchmark/benchmark.h>

#include <vector>

#include "TvMode.h"
#include "Util.h"

namespace {

void GetAntennaList(benchmark::State& state) {
  size_t rows = 0;
  for (auto _ : state) {
    Util::ResetCachesForTesting();
    std::vector<TvMode> list;
    Util::GetAntennaList(list);
    rows = list.size();
    benchmark::DoNotOptimize(list.data());
  }
  state.counters["rows"] = static_cast<double>(rows);
}

BENCHMARK(GetAntennaList)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
