// Least-squares refinement of the free coefficients of the quadratic form (and optionally a
// zero shift of 2θ) against observed lines, re-assigning hkl after every cycle until the
// assignments settle. Each cycle is linear in the coefficients, so it is one weighted solve.
#pragma once

#include <span>
#include <vector>

#include "core/index/lattice/crystal_system.h"
#include "core/index/lattice/line_assignment.h"

namespace quarvel {

struct MetricRefinementOptions {
  CrystalSystem system = CrystalSystem::Triclinic;
  Centring centring = Centring::P;
  double wavelength = 1.5406;     // Å
  double toleranceTwoTheta = 0.04;  // degrees: an observed line is indexed within this
  double sigmaTwoTheta = 0.01;      // degrees: weights w = 1/σ_q², least squares in 2θ to first order
  bool refineZero = false;
  double zeroBound = 0.2;  // degrees: a larger zero could absorb the misfit of a wrong cell
  // With refineZero: a zero within this many standard deviations of nothing only takes up misfit
  // and is dropped, the result being the refinement without it (0: the zero is always kept).
  double zeroSignificance = 0.0;
  int maxCycles = 10;
};

struct MetricRefinement {
  bool solved = false;     // false: singular design or too few indexed lines
  bool singular = false;   // the normal matrix could not be factorised
  bool converged = false;  // assignments and residual settled before maxCycles
  bool esdsAvailable = false;  // more indexed lines than parameters
  int cycles = 0;
  int indexedLines = 0;

  ReciprocalMetric metric;
  MetricParameters parameters{};
  MetricParameters parameterSigmas{};
  CellParameters cell;
  CellParameters cellSigmas{0, 0, 0, 0, 0, 0};
  double volume = 0, volumeSigma = 0;
  double zero = 0, zeroSigma = 0;  // degrees; the true angle is 2θ_obs − zero
  bool zeroDropped = false;        // a zero was refined and dropped as insignificant
  double droppedZeroSigma = -1;    // its standard deviation (−1: none could be given)
  double weightedResidual = 0;     // Σ w r² in q
  std::vector<LineAssignment> lines;  // final assignment of every observed line
};

// twoThetaObserved in degrees (any order). The start metric supplies the first assignment.
MetricRefinement refineMetric(std::span<const double> twoThetaObserved, const ReciprocalMetric& start,
                              const MetricRefinementOptions& options);

}  // namespace quarvel
