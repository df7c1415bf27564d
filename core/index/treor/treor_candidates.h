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

std::vector<CandidateCell> indexWithTreor(const IndexingCase& problem);

}  // namespace quarvel
