// The inner loops of the indexing engines: the line test of a trial cell, the calculated lines
// up to the 20th observed line, one M20 evaluation and the same-lattice test, for a triclinic cell.
#include <benchmark/benchmark.h>

#include <random>

#include "core/index/lattice/calculated_lines.h"
#include "core/index/lattice/figures_of_merit.h"
#include "core/index/lattice/lattice_relations.h"
#include "core/index/lattice/synthetic_lines.h"
#include "core/index/lattice/units.h"

namespace {

using namespace quarvel;

const CellParameters kTriclinic{8.754, 9.000, 6.910, 102.38, 98.68, 98.92};
constexpr double kLambda = 1.5406;

struct Observed {
  std::vector<double> q, tol;
};

Observed twentyLines() {
  SyntheticLineOptions o;
  o.maxLines = 20;
  o.noise = 0.01;
  Observed obs;
  for (const double t : syntheticLines(kTriclinic, Centring::P, o)) {
    obs.q.push_back(qFromTwoTheta(t, kLambda));
    obs.tol.push_back(qToleranceFromTwoTheta(t, 0.04, kLambda));
  }
  return obs;
}

// "Is there a calculated line within the window of this observed line?", solved for l.
void BM_LineTest(benchmark::State& state) {
  const ReciprocalMetric m = metricFromCell(kTriclinic);
  const Observed obs = twentyLines();
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(hasLineWithin(m, Centring::P, obs.q[i], obs.tol[i]));
    i = (i + 1) % obs.q.size();
  }
}
BENCHMARK(BM_LineTest);

void BM_CalculatedLinesToTwentiethLine(benchmark::State& state) {
  const ReciprocalMetric m = metricFromCell(kTriclinic);
  const Observed obs = twentyLines();
  std::vector<CalculatedLine> lines;
  for (auto _ : state) {
    calculatedLines(m, Centring::P, obs.q.back() + obs.tol.back(), lines);
    benchmark::DoNotOptimize(lines.data());
  }
  state.counters["lines"] = static_cast<double>(lines.size());
}
BENCHMARK(BM_CalculatedLinesToTwentiethLine);

void BM_M20(benchmark::State& state) {
  const ReciprocalMetric m = metricFromCell(kTriclinic);
  const Observed obs = twentyLines();
  std::vector<CalculatedLine> scratch;
  for (auto _ : state) benchmark::DoNotOptimize(deWolffFigure(obs.q, obs.tol, m, Centring::P, {20, 1.0, true}, scratch).m);
}
BENCHMARK(BM_M20);

// De-duplication of candidates: reduction of both cells and the unimodular search.
void BM_SameLatticeInAnotherSetting(benchmark::State& state) {
  const CellParameters other = *cellFromDirectMetric(
      transpose(Mat3::fromColumns({1, 0, 1}, {0, 1, 0}, {0, 1, 1})) * directMetric(kTriclinic) *
      Mat3::fromColumns({1, 0, 1}, {0, 1, 0}, {0, 1, 1}));
  for (auto _ : state) benchmark::DoNotOptimize(sameLattice(kTriclinic, Centring::P, other, Centring::P));
}
BENCHMARK(BM_SameLatticeInAnotherSetting);

}  // namespace
