#include "core/index/treor/treor_candidates.h"

#include <algorithm>

namespace quarvel {

std::vector<CandidateCell> acceptedCandidates(const TreorResult& result) {
  const std::vector<const TreorCell*> accepted = rankedAcceptedCells(result.cells);
  std::vector<CandidateCell> out;
  // A cell whose lines obey a centring is offered as that lattice first and as refined (primitive)
  // next: a few lines can fake a centring, and the cell the report prints is the primitive one.
  for (const TreorCell* cell : accepted) {
    out.push_back({cell->cell, cell->centring, cell->m20});
    if (cell->centring != Centring::P) out.push_back({cell->cell, Centring::P, cell->m20});
  }
  return out;
}

TreorInput treorInputFor(const IndexingCase& problem) {
  TreorInput input;
  input.title = problem.name;
  input.values = problem.twoTheta;
  input.keywords.choice = 3;
  input.keywords.wave = problem.wavelength;
  return input;
}

std::vector<CandidateCell> indexWithTreor(const IndexingCase& problem) {
  TreorInput input = treorInputFor(problem);
  input.keywords.vol = kBenchmarkVolumeLimit;
  return acceptedCandidates(runTreor(input, nullptr));
}

}  // namespace quarvel
