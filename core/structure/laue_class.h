// The sixteen Laue classes numbered as the dialogs list them, with the cell constraints each
// imposes and its reflection equivalences (representative and multiplicity of an hkl).
#pragma once

#include <array>
#include <string_view>
#include <vector>

#include "core/index/lattice/crystal_system.h"

namespace quarvel {

inline constexpr int kLaueClassCount = 16;

using Hkl = std::array<int, 3>;

bool isValidLaueClass(int laueClass);
// "1bar", "2/m-a", ..., "m3m".
std::string_view laueClassName(int laueClass);
CrystalSystem laueClassSystem(int laueClass);

// The cell with the class's constraints applied (equal edges, fixed 90° and 120° angles).
CellParameters applyLaueConstraints(const CellParameters& cell, int laueClass);

// The operations of the Laue group acting on (h, k, l), inversion included: 2 for 1bar up to
// 48 for m3m. Built once per class by closing a few generators.
const std::vector<std::array<Hkl, 3>>& laueOperations(int laueClass);

struct EquivalenceClass {
  Hkl representative{};
  int multiplicity = 0;
};

// The representative of hkl's class of equivalents (the largest member in lexicographic order)
// and the number of distinct members.
EquivalenceClass equivalenceClass(const Hkl& hkl, int laueClass);

}  // namespace quarvel
