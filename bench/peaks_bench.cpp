// Peak search and automatic background on a 20000-point pattern.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "core/peaks/background.h"
#include "core/peaks/peak_search.h"

using namespace quarvel;

namespace {

std::vector<float> pattern() {
  std::vector<float> y(20000);
  std::mt19937 rng(5);
  for (std::size_t i = 0; i < y.size(); ++i) {
    const double x = 5.0 + 0.005 * static_cast<double>(i);
    double mean = 300.0 + 200.0 * std::exp(-std::pow((x - 25.0) / 8.0, 2));
    for (int p = 0; p < 60; ++p) mean += 3000.0 / (1 + p % 7) * std::exp(-std::pow((x - 10.0 - 1.5 * p) / 0.07, 2));
    y[i] = static_cast<float>(std::normal_distribution<double>(mean, std::sqrt(mean))(rng));
  }
  return y;
}

void BM_PeakSearch20000(benchmark::State& state) {
  const auto y = pattern();
  PeakSearchOptions options;
  std::vector<Peak> peaks;
  for (auto _ : state) {
    searchPeaks(5.0f, 0.005f, y, options, peaks);
    benchmark::DoNotOptimize(peaks.data());
  }
  state.counters["peaks"] = static_cast<double>(peaks.size());
}

void BM_AutoBackground20000(benchmark::State& state) {
  const auto y = pattern();
  for (auto _ : state) benchmark::DoNotOptimize(estimateBackground(y, 201));
}

}  // namespace

BENCHMARK(BM_PeakSearch20000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AutoBackground20000)->Unit(benchmark::kMillisecond);
