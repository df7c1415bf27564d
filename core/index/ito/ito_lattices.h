// Lattices from pairs of zones (`threed`), their reduction and standard form (`norm3`), and
// their indexing and least-squares refinement against the first 20 lines (`refpar`, `refpar2`).
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/index/ito/ito_deck.h"
#include "core/index/ito/ito_lines.h"
#include "core/index/ito/ito_zones.h"
#include "core/index/lattice/centring.h"
#include "core/index/lattice/crystal_system.h"
#include "core/index/lattice/metric_refinement.h"
#include "core/index/lattice/reciprocal_metric.h"

namespace quarvel {

struct ItoLattice {
  ReciprocalMetric metric;  // q-units (10⁴/d²) of the cell printed: the reduced cell, or the
                            // conventional cell when a higher metric symmetry was recognised
  CellParameters cell;      // direct cell of `metric`
  double volume = 0;
  CrystalSystem system = CrystalSystem::Triclinic;
  Centring centring = Centring::P;
  std::string bravais = "aP";
  std::string pedigree;     // "z1xz2/row" or "given"
  int support = 0;          // lines that fixed the missing cross term
  int indexed = 0;          // of the first 20 lines
  double merit = 0;         // de Wolff figure, centring absences removed
  double meanDelta = 0;     // q-units
  int calculated = 0;
  bool singular = false;
  bool preferred = false;   // made by refpar2 for a system marked +1
  double zero = 0;          // degrees, refined with the cell when significant: true 2θ = observed − zero
  double zeroSigma = 0;
};

struct LatticeSearch {
  std::vector<ItoLattice> lattices;   // from threed, reduced, distinct
  std::vector<std::string> notes;     // "is the same as lattice", ...
};

// threed + norm3: lattices from the first nz1 × nz2 zone pairs (each zone with itself too).
LatticeSearch combineZones(const std::vector<ItoZone>& zones, const ItoLines& lines, const ItoParameters& parameters,
                           const std::function<bool()>& interrupted);

// A lattice from a trial-lattice card: reciprocal constants in q-units, or a direct cell.
std::optional<ItoLattice> latticeFromCard(const std::array<double, 6>& card);

// refpar / refpar2: index and refine every lattice, drop the ones below the print thresholds
// (with their reason in `notes`), recognise the metric symmetry, sort on lines indexed and merit.
std::vector<ItoLattice> refineLattices(const std::vector<ItoLattice>& lattices, const ItoLines& lines,
                                       const ItoParameters& parameters, std::vector<std::string>& notes);

// Refines the cell together with a zero shift of 2θ when the lines are angles, and keeps the zero
// only when it stands out of its standard deviation; otherwise the cell is refined alone.
MetricRefinement refineWithSignificantZero(std::span<const double> twoTheta, const ReciprocalMetric& start,
                                           MetricRefinementOptions options, const ItoLines& lines);

// The figure of merit of a lattice on the first 20 lines, corrected for the lattice's zero shift
// (fills indexed, merit, meanDelta).
void scoreLattice(ItoLattice& lattice, const ItoLines& lines);

// Metric in q-units -> Å⁻² and back.
ReciprocalMetric toAngstrom(const ReciprocalMetric& qUnits);
ReciprocalMetric toQUnits(const ReciprocalMetric& perSquareAngstrom);

}  // namespace quarvel
