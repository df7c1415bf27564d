// One run of the trial-and-error engine on a parsed input: pre-processing of the lines, the
// search stages from cubic to triclinic, refinement of the cells that index enough test lines,
// the analysis of accepted cells and the report text.
#pragma once

#include <string>
#include <vector>

#include "core/index/lattice/centring.h"
#include "core/index/lattice/metric_refinement.h"
#include "core/index/treor/treor_input.h"
#include "core/index/treor/trial_search.h"

namespace quarvel {

class Shell;

// A trial cell after least squares, as the report lists it.
struct TreorCell {
  CrystalSystem system = CrystalSystem::Triclinic;
  std::string family;  // the test that found it ("CUBIC", "MONOCLINIC (020)", ...)
  CellParameters cell;
  Centring centring = Centring::P;  // the lattice centring the indexed lines obey
  double volume = 0;
  double m20 = 0;
  int unindexed = 0;
  // de Wolff's figure over every line, not only the first 20: it tells apart cells whose first
  // 20 lines lie in one zone and which differ only in the axis that the later lines show.
  double allLinesMerit = 0;
  int allLinesUnindexed = 0;
  double meanDiscrepancy = 0;  // ⟨|q_obs − q_calc|⟩ of the indexed lines among the first 20
  double zero = 0;  // degrees 2θ, refined with the cell: the true angle is the observed one minus it
  double zeroSigma = 0;  // its standard deviation (also when it was dropped as insignificant)
  bool accepted = false;
  CrystalSystem metricSystem = CrystalSystem::Triclinic;  // of the lattice, whatever the setting found
};

struct TreorResult {
  std::vector<std::string> report;  // the lines of the output file
  std::vector<TreorCell> cells;     // every refined cell, in the order found
  bool interrupted = false;
};

// `shell` may be null (no progress, no interruption). The searches and refinements use
// `threads` cores (0: all of them); the report is the same for any number.
TreorResult runTreor(const TreorInput& input, Shell* shell, int threads = 0);
// The accepted cells, best first. A lattice of lower metric symmetry has more free parameters
// to fit the same lines (an orthorhombic sub-lattice of a cubic I cell indexes exactly its lines),
// so its M20 counts for less by kMeritPerParameter per extra parameter. So it does for each line
// past the 20th a cell leaves unindexed beyond the first (an impurity may lie there): cells of one
// zone of the true lattice reach a good M20 on the first 20 lines and miss the lines off the
// zone. Near-ties are then decided by all the lines and the smaller volume.
inline constexpr double kMeritPerParameter = 1.5;
std::vector<const TreorCell*> rankedAcceptedCells(const std::vector<TreorCell>& cells);

// The report of an input that failed to parse.
std::vector<std::string> invalidCardReport(const std::string& badCard);

}  // namespace quarvel
