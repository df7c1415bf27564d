// The trial-and-error engine as an indexing method of the benchmark: one run with the default
// keywords on a problem's lines, the accepted cells best first.
#pragma once

#include <vector>

#include "core/index/benchmark/indexing_matrix.h"
#include "core/index/treor/treor_run.h"

namespace quarvel {

// Accepted cells of a run, best first (rankedAcceptedCells); a cell with a likely centring comes
// as the centred and as the primitive lattice.
std::vector<CandidateCell> acceptedCandidates(const TreorResult& result);

// The input a job would write for these lines: 2θ, the problem's wavelength, default limits.
TreorInput treorInputFor(const IndexingCase& problem);

// The benchmark's job states one volume limit for every problem, as a user states the largest
// cell expected: the synthetic cells are drawn up to 3000 Å³ (conventional cell), beyond the
// default 2000 Å³. Negative: every crystal system is searched.
inline constexpr double kBenchmarkVolumeLimit = -3000;

// The job of treorInputFor with the benchmark's volume limit, run; the accepted cells best first.
std::vector<CandidateCell> indexWithTreor(const IndexingCase& problem);

}  // namespace quarvel
