// One TREOR90 run per crystal system on a pattern as measured: 25 lines at Cu Kα1 with 0.01° of
// noise, a 0.05° zero error, one impurity line and one line missing (the benchmark matrix's
// problems of seed 1), with the benchmark's job (VOL −3000). Wall time, as the user waits for it:
// the engine shares its searches among the cores (the "threads" argument, 0 for all of them).
//
//   treor_bench --benchmark_filter=Orthorhombic
#include <benchmark/benchmark.h>

#include <string>

#include "core/index/benchmark/indexing_matrix.h"
#include "core/index/treor/treor_candidates.h"

namespace {

using namespace quarvel;

// The problem as the matrix's Cu Kα set draws it (`indexing-matrix --cu --seed 1`): the draws
// depend on every level of the set, so the set is drawn whole.
IndexingCase problem(const std::string& lattice) {
  SyntheticMatrixOptions o;
  o.seed = 1;
  o.wavelengths = {1.5406};
  o.noise = {0.0, 0.01, 0.02};
  o.zero = {0.0, 0.05};
  o.impurities = {1};
  o.missing = {1};
  for (const IndexingCase& c : syntheticMatrix(o))
    if (c.name.starts_with(lattice + " λ1.5406 σ0.01 z0.05")) return c;
  return {};
}

void runEngine(benchmark::State& state, const std::string& lattice) {
  const IndexingCase c = problem(lattice);
  TreorInput input = treorInputFor(c);
  input.keywords.vol = kBenchmarkVolumeLimit;
  bool found = false;
  for (auto _ : state) {
    const TreorResult result = runTreor(input, nullptr, static_cast<int>(state.range(0)));
    found = knownCellFound(c, acceptedCandidates(result), 4);
    benchmark::DoNotOptimize(result.cells.data());
  }
  state.counters["found"] = found ? 1 : 0;
  state.SetLabel(c.name);
}

void Cubic(benchmark::State& state) { runEngine(state, "cI"); }
void Tetragonal(benchmark::State& state) { runEngine(state, "tP"); }
void Hexagonal(benchmark::State& state) { runEngine(state, "hP"); }
void Orthorhombic(benchmark::State& state) { runEngine(state, "oP"); }
void OrthorhombicCentred(benchmark::State& state) { runEngine(state, "oI"); }
void Monoclinic(benchmark::State& state) { runEngine(state, "mP"); }
void Triclinic(benchmark::State& state) { runEngine(state, "aP"); }

#define TREOR_BENCHMARK(name) BENCHMARK(name)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()
TREOR_BENCHMARK(Cubic);
TREOR_BENCHMARK(Tetragonal);
TREOR_BENCHMARK(Hexagonal);
TREOR_BENCHMARK(Orthorhombic);
TREOR_BENCHMARK(OrthorhombicCentred);
TREOR_BENCHMARK(Monoclinic);
TREOR_BENCHMARK(Triclinic);

}  // namespace
