#include <benchmark/benchmark.h>

#include "core/pattern/pattern_store.h"

namespace {

void BM_RebuildAxisTable(benchmark::State& state) {
  quarvel::PatternStore store;
  auto& p = store.pattern();
  p.start = 5.0f;
  p.step = 0.005f;
  p.count = quarvel::kMaxPoints;
  p.wavelength = 1.5406f;
  p.recomputeEnd();
  for (auto _ : state) {
    store.rebuildAxisTable();
    benchmark::DoNotOptimize(store.axisTable().data());
  }
}
BENCHMARK(BM_RebuildAxisTable)->Unit(benchmark::kMicrosecond);

}  // namespace
