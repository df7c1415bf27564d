// Which coefficients of the quadratic form are free for each crystal system, and how they tie
// the six coefficients together. This is what the refinement varies and what the trial solves
// of the engines fill in.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "core/index/lattice/reciprocal_metric.h"

namespace quarvel {

enum class CrystalSystem {
  Cubic,
  Tetragonal,
  Hexagonal,     // also trigonal and rhombohedral lattices on hexagonal axes
  Rhombohedral,  // rhombohedral axes: a = b = c, α = β = γ
  Orthorhombic,
  MonoclinicA,   // a unique: β = γ = 90°
  Monoclinic,    // b unique: α = γ = 90°
  MonoclinicC,   // c unique: α = β = 90°
  Triclinic,
};

inline constexpr int kMaxMetricParameters = 6;
using MetricParameters = std::array<double, kMaxMetricParameters>;

std::string_view crystalSystemName(CrystalSystem system);

// Number of free coefficients (1 cubic ... 6 triclinic).
int freeParameterCount(CrystalSystem system);

// The design row x(hkl) with q = Σ x_i p_i for the free coefficients p of the system; entries
// past freeParameterCount are zero.
MetricParameters designRow(CrystalSystem system, int h, int k, int l);

// Free coefficients -> full form, and back (the back direction reads the free entries only).
ReciprocalMetric metricFromParameters(CrystalSystem system, std::span<const double> p);
MetricParameters parametersFromMetric(CrystalSystem system, const ReciprocalMetric& metric);

// Forces a cell onto the system's constraints (equal edges, 90° and 120° angles), the
// independent values taken from the first of each tied group.
CellParameters constrainCell(CrystalSystem system, const CellParameters& cell);

}  // namespace quarvel
