// Relations between candidate cells: the same lattice in another setting (bases related by an
// integer matrix of determinant ±1), and super-cells (an integer matrix of determinant n ≥ 2).
#pragma once

#include <vector>

#include "core/index/lattice/niggli_reduction.h"

namespace quarvel {

// Relative tolerance on the metric tensors: ‖TᵀG₁T − G₂‖ ≤ τ‖G₂‖.
inline constexpr double kSameLatticeTolerance = 2e-3;

// The integer 3×3 matrices with entries in {−1, 0, 1} and determinant ±1: enough to relate two
// Niggli-reduced cells of one lattice, including the settings that reduction boundaries flip.
const std::vector<Mat3>& smallUnimodularMatrices();

// Lower-triangular Hermite normal forms of determinant n: one per sublattice of index n
// (7 for n = 2, 13 for n = 3, 35 for n = 4).
std::vector<Mat3> hermiteNormalForms(int n);

// How the tolerance is applied: to the metric as a whole, which a long axis dominates (refined
// cells of one lattice differ most along it), or to each element relative to its own size
// (each squared edge to itself, each cross term to the product of its two edges), which holds a
// short edge as tightly as a long one.
enum class MetricMatch { Whole, EachElement };

// Both metrics direct and reduced (niggliReduce with the classification tolerance).
bool sameReducedLattice(const Mat3& reduced1, const Mat3& reduced2, double tolerance = kSameLatticeTolerance,
                        MetricMatch match = MetricMatch::Whole);

bool sameLattice(const CellParameters& cell1, Centring centring1, const CellParameters& cell2, Centring centring2,
                 double tolerance = kSameLatticeTolerance, MetricMatch match = MetricMatch::Whole);

// n ≥ 2 when `candidate` is an index-n super-cell of `cell` (its lattice a sublattice of index
// n), 1 when both are the same lattice, 0 otherwise (or n above maxIndex).
int superCellIndex(const CellParameters& cell, Centring centring, const CellParameters& candidate,
                   Centring candidateCentring, int maxIndex = 4, double tolerance = kSameLatticeTolerance);

}  // namespace quarvel
