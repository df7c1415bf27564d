// The 44 reduced forms of Niggli: which pattern of equalities the scalar products of the
// reduced basis satisfy (A = a·a, B = b·b, C = c·c, D = b·c, E = a·c, F = a·b) fixes the
// lattice character and its Bravais type. A second, independent route to the metric symmetry
// besides the twofold-axis search; the engines print its number.
#pragma once

#include <string_view>

#include "core/index/lattice/niggli_reduction.h"

namespace quarvel {

struct ReducedForm {
  int number = 0;               // 1-44; 0 when the metric is not a reduced one
  std::string_view bravais;     // "cF", "hR", "tI", ..., "mI" for the I-centred monoclinic settings
};

// `reducedMetric` is the direct metric of a Niggli-reduced basis; equalities hold within
// relativeTolerance × (A + B + C)/3.
ReducedForm reducedForm(const Mat3& reducedMetric, double relativeTolerance = 2e-3);

}  // namespace quarvel
