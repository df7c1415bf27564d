// The Modify operations that touch every point, on a full 20000-point pattern: Smooth,
// Savitzky-Golay, Convert and the order-14 Chebyshev fit. Each should stay well under 10 ms.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "core/pattern/pattern_store.h"
#include "core/process/chebyshev_fit.h"
#include "core/process/convert.h"
#include "core/process/smoothing.h"

namespace {

using quarvel::kMaxPoints;
using quarvel::PatternSlot;

// A pattern of 20000 points from 5° in 0.005° steps: a sloping background and a few peaks.
void fillPattern(PatternSlot& slot) {
  slot.start = 5.0f;
  slot.step = 0.005f;
  slot.count = kMaxPoints;
  slot.wavelength = 1.5406f;
  slot.recomputeEnd();
  for (int i = 0; i < kMaxPoints; ++i) {
    const float x = slot.x(i);
    float y = 200.0f - x;
    for (float centre : {20.0f, 35.5f, 52.25f, 88.0f}) {
      const float d = (x - centre) / 0.05f;
      y += 5000.0f * std::exp(-0.5f * d * d);
    }
    slot.y[static_cast<std::size_t>(i)] = y;
  }
}

void BM_Smooth(benchmark::State& state) {
  PatternSlot slot;
  fillPattern(slot);
  std::vector<float> x(static_cast<std::size_t>(kMaxPoints));
  for (int i = 0; i < kMaxPoints; ++i) x[static_cast<std::size_t>(i)] = slot.x(i);
  const int n = static_cast<int>(state.range(0));
  for (auto _ : state) {
    quarvel::movingAverage(x, slot.data(), n);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_Smooth)->Arg(5)->Arg(25)->Unit(benchmark::kMillisecond);

void BM_SavitzkyGolay(benchmark::State& state) {
  PatternSlot slot;
  fillPattern(slot);
  for (auto _ : state) {
    quarvel::savitzkyGolay(slot.data(), static_cast<int>(state.range(0)));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_SavitzkyGolay)->Arg(9)->Arg(25)->Unit(benchmark::kMillisecond);

void BM_ConvertCuToMo(benchmark::State& state) {
  PatternSlot original;
  fillPattern(original);
  PatternSlot slot;
  const quarvel::ConvertSettings grid{2.5f, 48.0f, 0.0025f, 1.5406f, 0.70930f, true};  // 18201 points
  for (auto _ : state) {
    state.PauseTiming();
    slot.copyFrom(original);
    state.ResumeTiming();
    benchmark::DoNotOptimize(quarvel::convertPattern(slot, grid));
  }
}
BENCHMARK(BM_ConvertCuToMo)->Unit(benchmark::kMillisecond);

void BM_ChebyshevFit(benchmark::State& state) {
  PatternSlot slot;
  fillPattern(slot);
  for (auto _ : state) benchmark::DoNotOptimize(quarvel::fitChebyshev(slot, static_cast<int>(state.range(0))));
}
BENCHMARK(BM_ChebyshevFit)->Arg(14)->Unit(benchmark::kMillisecond);

}  // namespace
