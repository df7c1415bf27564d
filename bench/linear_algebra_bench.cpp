// Inversion of least-squares normal matrices up to the largest order the fit allows.
#include <benchmark/benchmark.h>

#include <random>

#include "core/fit/linear_algebra.h"

namespace {

// A dense, symmetric positive-definite matrix like a profile fit's normal matrix: J^T J plus a
// diagonal, built from a random design.
quarvel::SquareMatrix<double> normalMatrix(int n) {
  std::mt19937 rng(42);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  quarvel::SquareMatrix<double> a(n);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j <= i; ++j) a(i, j) = a(j, i) = u(rng) * 0.01;
  for (int i = 0; i < n; ++i) a(i, i) = 1.0 + std::abs(u(rng));
  return a;
}

void BM_InvertNormalMatrix(benchmark::State& state) {
  const auto original = normalMatrix(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    state.PauseTiming();
    auto a = original;
    state.ResumeTiming();
    benchmark::DoNotOptimize(quarvel::invertMatrix(a));
  }
}
BENCHMARK(BM_InvertNormalMatrix)->Arg(100)->Arg(500)->Arg(2030)->Unit(benchmark::kMillisecond);

}  // namespace
