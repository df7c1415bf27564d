// The `untcel` and `zerchk` parts of the report: the most-probable-solutions and direct-constants
// tables (their columns are what the solution reader takes), the special metrics, the full line
// list of the best solution, and the zero-error table.
#pragma once

#include <string>
#include <vector>

#include "core/index/ito/ito_deck.h"
#include "core/index/ito/ito_lattices.h"
#include "core/index/ito/ito_lines.h"

namespace quarvel {

using ReportLines = std::vector<std::string>;

// Rows: number I4, q(a)..q(f) 6F9.2 (columns 5-58), lines indexed I5 in columns 60-64, figure
// of merit F6.1 in columns 68-73, then pedigree and lattice type.
std::string solutionRow(int number, const ItoLattice& lattice);
// Rows: one blank, a, b, c, alfa, beta, gamma in six width-9 fields (columns 2-55), the volume
// F12.2 in columns 56-67.
std::string directConstantsRow(const ItoLattice& lattice);

void printSolutions(ReportLines& report, const std::vector<ItoLattice>& solutions, const ItoParameters& parameters);

// The special metric of a solution: "cubic", "tetragonal", "hexagonal", "rhombohedral", "a freak"
// (equal edges without the symmetry they suggest), or empty.
std::string specialMetric(const ItoLattice& lattice);

// The lattice refined against all lines in two further cycles, and every observed and
// calculated line sorted on 2θ (not printed beyond 100 calculated lines).
void printLineList(ReportLines& report, const ItoLattice& lattice, const ItoLines& lines, const ItoParameters& parameters);

struct ZeroCheckRow {
  int shift = 0;  // hundredths of a degree
  int fits = 0;
  double meanDelta = 0;  // q-units
};
std::vector<ZeroCheckRow> zeroCheck(const ItoLines& lines, const ItoParameters& parameters);
void printZeroCheck(ReportLines& report, const ItoLines& lines, const ItoParameters& parameters);

}  // namespace quarvel
