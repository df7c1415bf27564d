// The metric symmetry of a lattice by the search for twofold axes: a direct row [uvw] nearly
// parallel to a reciprocal row (hkl) with |uh + vk + wl| = 1 or 2 is a (pseudo) twofold axis.
// Their number fixes the crystal system and the axes themselves give the conventional cell.
// One tolerance, the largest angle between the two rows, decides how much pseudo-symmetry counts.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "core/index/lattice/crystal_system.h"
#include "core/index/lattice/niggli_reduction.h"

namespace quarvel {

inline constexpr double kDefaultAxisDeviation = 0.5;  // degrees, for refined powder cells

struct TwofoldAxis {
  std::array<int, 3> direct{};      // [uvw] in the reduced basis
  std::array<int, 3> reciprocal{};  // (hkl) in the reduced basis
  double deviation = 0;             // degrees between the two rows
};

struct LatticeSymmetry {
  CrystalSystem system = CrystalSystem::Triclinic;  // Hexagonal also stands for hR (centring R)
  Centring centring = Centring::P;
  CellParameters conventional;  // hR on hexagonal axes (obverse); monoclinic b unique, β ≥ 90°
  CellParameters reduced;       // the Niggli cell the search started from
  Mat3 transform;               // conventional basis = reduced basis · transform
  std::vector<TwofoldAxis> axes;
  double largestDeviation = 0;  // of the axes accepted, degrees

  std::string bravaisSymbol() const;  // "cF", "hR", "mC", "aP", ...
};

LatticeSymmetry latticeSymmetry(const CellParameters& cell, Centring centring,
                                double maxDeviationDegrees = kDefaultAxisDeviation);

}  // namespace quarvel
