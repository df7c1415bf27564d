// Line lists made from a known cell, with the faults real peak lists have (angular noise, a
// zero shift, missing lines, impurity lines): test problems for the indexing engines and a way
// for users to compare a cell with their peaks.
#pragma once

#include <cstdint>
#include <vector>

#include "core/index/lattice/centring.h"
#include "core/index/lattice/reciprocal_metric.h"

namespace quarvel {

struct SyntheticLineOptions {
  double wavelength = 1.5406;  // Å
  double maxTwoTheta = 90.0;   // degrees
  double noise = 0.0;          // σ of Gaussian 2θ noise, degrees
  double zero = 0.0;           // added to every 2θ: the true angle is 2θ − zero
  double resolution = 0.0;     // lines closer than this (degrees) merge into their mean
  int drop = 0;                // lines removed at random, never one of the first three
  int impurities = 0;          // lines added uniformly between the first and the last line
  int maxLines = 0;            // keep at most this many (0: all)
  std::uint32_t seed = 1;
};

// Observed 2θ values (degrees), ascending.
std::vector<double> syntheticLines(const CellParameters& cell, Centring centring, const SyntheticLineOptions& options);
// The same from given distinct q values (Å⁻², ascending), e.g. from the reflection generator.
std::vector<double> syntheticLinesFromQ(const std::vector<double>& distinctQ, const SyntheticLineOptions& options);

}  // namespace quarvel
