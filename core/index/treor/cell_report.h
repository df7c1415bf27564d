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
  double correction = 0;         // degrees: the zero correction already taken off twoTheta and q
};

// A zero refined with the cell stays within this (degrees 2θ, beyond the correction the lines
// already carry): a zero free to go further absorbs the misfit of a wrong cell.
inline constexpr double kRefinedZeroBound = 0.1;
// A refined zero is kept when it exceeds this many standard deviations. Three dropped the 0.05°
// zero of large cells at 0.02° noise (the edges then refine 0.2 % short).
inline constexpr double kSignificantZero = 2.0;

// q of every line with a further zero taken off its angle.
std::vector<double> zeroCorrectedQ(const ObservedLines& lines, double zero);

inline double sinSquaredTheta(double q, double wavelength) { return 0.25 * wavelength * wavelength * q; }

struct RefinedTrial {
  bool solved = false;
  MetricRefinement refinement;
  DeWolffFigure figure;
  // Standard deviation of the zero refined with the cell (degrees 2θ), kept when the zero is
  // then dropped as insignificant: how well the lines tell one zero from another.
  double zeroSigma = 0;
};

// The cell and a zero of 2θ refined together; M20 is taken on the lines corrected by that zero.
RefinedTrial refineTrial(const ObservedLines& lines, CrystalSystem system, const ReciprocalMetric& start,
                         int maxCycles = 10);

// "NOT REFINED UNIT CELL" (when `start` is given), the line table, the cell block, M20 and the
// warnings. With a centring other than P the lines obey that lattice centring and M20 counts
// its reflections only; a line before M20 says so.
void printRefinement(std::vector<std::string>& out, const ObservedLines& lines, CrystalSystem system,
                     const ReciprocalMetric* start, const RefinedTrial& result, Centring centring = Centring::P);

// The fixed layout: "   A =" a σ(a) " A   ALFA =" α σ(α) " DEG", ... then the volume line.
void printCellBlock(std::vector<std::string>& out, const CellParameters& cell, const CellParameters& sigma,
                    double volume);
std::string meritLine(double m20, int unindexed);
// The zero of 2θ found with the cell, below the cell block: "   ZERO =" value σ.
std::string zeroLine(double zero, double sigma);

// Symmetry tests, space-diagonal test and the reduction to the conventional cell.
void printCellAnalysis(std::vector<std::string>& out, const ObservedLines& lines, const CellParameters& cell,
                       double m20);

}  // namespace quarvel
