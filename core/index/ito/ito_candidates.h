// The zone-indexing engine as an entry of the indexing benchmark: one case in, the printed
// solutions out as candidate cells, best first.
#pragma once

#include <vector>

#include "core/index/benchmark/indexing_case.h"
#include "core/index/benchmark/indexing_matrix.h"
#include "core/index/ito/ito_deck.h"

namespace quarvel {

// Default parameters with the case's wavelength; the lines are the case's 2θ values.
ItoProblem itoProblemFromCase(const IndexingCase& problem);

std::vector<CandidateCell> itoCandidates(const IndexingCase& problem);

}  // namespace quarvel
