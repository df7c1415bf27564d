// The `reader` stage: line positions to q-units (10⁴/d²) with the zero correction, sorted, at
// most 40 kept, each with its tolerance from tolg, and the duplicates found on the way.
#pragma once

#include <string>
#include <vector>

#include "core/index/ito/ito_deck.h"

namespace quarvel {

inline constexpr int kItoMaxLines = 40;       // lines used
inline constexpr int kItoMinLines = 20;       // lines needed
inline constexpr int kItoIndexingLines = 20;  // lines that count for indexing and the figure of merit

enum class ItoInputKind { TwoTheta, QUnits, Spacing };

struct ItoLines {
  ItoInputKind kind = ItoInputKind::TwoTheta;
  std::vector<double> twoTheta;   // degrees, zero correction applied, ascending
  std::vector<double> q;          // q-units
  // q-units: ±tolg at the line's angle. An angular error δ gives a q error 2·10⁴·δ/(λ·d) that
  // grows as 1/λ at a given spacing; the tolerance follows it. tol2 and tol3 stay in q-units:
  // scaled the same way they let chance clusters win at short wavelengths (measured, see the
  // user guide), because the lines of a given spacing lie no further apart in q.
  std::vector<double> tolerance;
  int dropped = 0;                // negative values
  int given = 0;                  // positive values before the 40-line cut
  std::vector<double> duplicates;  // input values given twice (the later one is dropped)
  double equalityLimit = 0;        // q-units
  double meanTolerance = 0;
  double wavelength = 0;           // Å: the lines' q and a refined zero shift convert with it

  int count() const { return static_cast<int>(q.size()); }
  int indexingCount() const { return count() < kItoIndexingLines ? count() : kItoIndexingLines; }
};

// Ascending first six values are 2θ (or q-units when above 180), descending ones spacings d.
ItoInputKind detectInputKind(const std::vector<double>& positive);

ItoLines prepareLines(const std::vector<double>& values, const ItoParameters& parameters);

// q-units of a 2θ value and back.
double qUnitsAt(double twoTheta, double wavelength);
double twoThetaAtQUnits(double q, double wavelength);

}  // namespace quarvel
