// Figures of merit of a cell against observed lines: de Wolff's M20 (in q, distinct calculated
// values, lattice-centring absences removed) and Smith and Snyder's F_N (in 2θ).
#pragma once

#include <span>
#include <vector>

#include "core/index/lattice/calculated_lines.h"

namespace quarvel {

struct FigureOfMeritOptions {
  int lines = 20;                 // M20: the first 20 observed lines (fewer when fewer exist)
  double countLimitFactor = 1.0;  // calculated values counted up to factor × q(last line) ...
  bool addLastTolerance = false;  // ... plus the tolerance of the last line when set
};

struct DeWolffFigure {
  double m = 0;                // Q_N / (2 ⟨ε⟩ N_calc)
  int lines = 0;               // observed lines used (20, or all when fewer)
  int unindexed = 0;           // among those lines
  int calculated = 0;          // distinct calculated values counted
  double meanDiscrepancy = 0;  // ⟨|q_obs − q_calc|⟩ over the indexed lines
  double qLast = 0;            // q of the last line used
};

// qObserved sorted ascending; tolerance holds one q tolerance per line. The last observed line
// sets Q_N whether it is indexed or not.
DeWolffFigure deWolffFigure(std::span<const double> qObserved, std::span<const double> tolerance,
                            const ReciprocalMetric& metric, Centring centring,
                            const FigureOfMeritOptions& options = {});
// The same with a caller-owned buffer for the calculated lines, for loops over many trials.
DeWolffFigure deWolffFigure(std::span<const double> qObserved, std::span<const double> tolerance,
                            const ReciprocalMetric& metric, Centring centring, const FigureOfMeritOptions& options,
                            std::vector<CalculatedLine>& scratch);

struct SmithSnyderFigure {
  double f = 0;                 // N / (⟨|Δ2θ|⟩ · N_poss)
  int lines = 0;
  double meanDeltaTwoTheta = 0;  // degrees, over the indexed lines
  int possible = 0;             // distinct possible lines up to the N-th observed line
};

// twoThetaObserved sorted ascending (degrees); a line is indexed when a calculated line lies
// within ±toleranceDegrees.
SmithSnyderFigure smithSnyderFigure(std::span<const double> twoThetaObserved, double toleranceDegrees,
                                    const ReciprocalMetric& metric, Centring centring, double wavelength,
                                    int lines = 30);

}  // namespace quarvel
