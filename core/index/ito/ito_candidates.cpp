#include "core/index/ito/ito_candidates.h"

#include "core/index/ito/ito_engine.h"

namespace quarvel {

ItoProblem itoProblemFromCase(const IndexingCase& problem) {
  ItoProblem ito;
  ito.title = problem.name;
  ito.parameters.wavel = problem.wavelength;
  ito.values = problem.twoTheta;
  return ito;
}

std::vector<CandidateCell> itoCandidates(const IndexingCase& problem) {
  std::vector<std::string> report;
  const ItoProblemResult result = solveItoProblem(itoProblemFromCase(problem), report);
  std::vector<CandidateCell> cells;
  for (const auto& s : result.solutions) cells.push_back({s.cell, s.centring, s.merit});
  return cells;
}

}  // namespace quarvel
