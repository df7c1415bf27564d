// Refinement of a trial cell against the observed lines and the report blocks that describe
// it: the line table, the cell with its standard deviations in the fixed layout the solution
// reader reads, M20, the warnings, and for accepted cells the symmetry tests and the reduction.
#pragma once

#include <string>
#include <vector>

#include "core/index/lattice/figures_of_merit.h"
#include "core/index/lattice/metric_refinement.h"

namespace quarvel {

// The observed lines of a run, ascending in q, with what the report prints of them.
struct ObservedLines {
  std::vector<double> q;         // Å⁻²
  std::vector<double> twoTheta;  // degrees
  std::vector<double> given;     // as written in the input
  double wavelength = 1.5406;
  double refineTolerance = 0;    // q window of the refinement (D2)
  int refineLines = 25;          // lines used in the least squares
};

inline double sinSquaredTheta(double q, double wavelength) { return 0.25 * wavelength * wavelength * q; }

struct RefinedTrial {
  bool solved = false;
  MetricRefinement refinement;
  DeWolffFigure figure;
};

RefinedTrial refineTrial(const ObservedLines& lines, CrystalSystem system, const ReciprocalMetric& start,
                         int maxCycles = 10);

// "NOT REFINED UNIT CELL" (when `start` is given), the line table, the cell block, M20 and the
// warnings.
void printRefinement(std::vector<std::string>& out, const ObservedLines& lines, CrystalSystem system,
                     const ReciprocalMetric* start, const RefinedTrial& result);

// The fixed layout: "   A =" a σ(a) " A   ALFA =" α σ(α) " DEG", ... then the volume line.
void printCellBlock(std::vector<std::string>& out, const CellParameters& cell, const CellParameters& sigma,
                    double volume);
std::string meritLine(double m20, int unindexed);

// Symmetry tests, space-diagonal test and the reduction to the conventional cell.
void printCellAnalysis(std::vector<std::string>& out, const ObservedLines& lines, const CellParameters& cell,
                       double m20);

}  // namespace quarvel
