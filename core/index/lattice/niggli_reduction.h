// Niggli reduction of a lattice by the Křivý-Gruber steps, every comparison made within a
// tolerance scaled to the cell (without it a 90° angle stored as 89.99999° flips the sign class
// and the same lattice reduces to two different cells).
#pragma once

#include "core/index/lattice/centring.h"
#include "core/index/lattice/reciprocal_metric.h"

namespace quarvel {

// Comparison tolerances relative to V^(2/3): exact cells for reporting, refined powder cells
// when the aim is to classify the lattice.
inline constexpr double kReportingTolerance = 1e-5;
inline constexpr double kClassificationTolerance = 1e-3;

struct NiggliReduction {
  bool reduced = false;  // false: the step limit was reached (impossible data)
  int steps = 0;
  Mat3 metric;           // direct metric G of the reduced basis
  Mat3 transform;        // reduced basis = input basis · transform (integer entries, det +1)
  CellParameters cell;
};

// Reduces a primitive basis given by its direct metric tensor.
NiggliReduction niggliReduce(const Mat3& directMetric, double relativeTolerance = kReportingTolerance);

// Basis change from a centred conventional cell to a primitive cell of the same lattice
// (primitive basis = conventional basis · matrix). R is the obverse setting on hexagonal axes.
Mat3 primitiveTransform(Centring centring);
Mat3 primitiveDirectMetric(const CellParameters& cell, Centring centring);

// The reduced cell of a (possibly centred) cell.
NiggliReduction niggliReduce(const CellParameters& cell, Centring centring,
                             double relativeTolerance = kReportingTolerance);

}  // namespace quarvel
