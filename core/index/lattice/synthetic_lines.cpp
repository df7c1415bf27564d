#include "core/index/lattice/synthetic_lines.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "core/index/lattice/calculated_lines.h"
#include "core/index/lattice/units.h"

namespace quarvel {

namespace {

std::vector<double> mergeWithinResolution(const std::vector<double>& sorted, double resolution) {
  std::vector<double> merged;
  std::size_t i = 0;
  while (i < sorted.size()) {
    std::size_t j = i + 1;
    double sum = sorted[i];
    while (j < sorted.size() && sorted[j] - sorted[j - 1] < resolution) sum += sorted[j++];
    merged.push_back(sum / static_cast<double>(j - i));
    i = j;
  }
  return merged;
}

}  // namespace

std::vector<double> syntheticLines(const CellParameters& cell, Centring centring, const SyntheticLineOptions& o) {
  const double qMax = qFromTwoTheta(std::min(o.maxTwoTheta, 179.9), o.wavelength);
  return syntheticLinesFromQ(distinctValues(calculatedLines(metricFromCell(cell), centring, qMax)), o);
}

std::vector<double> syntheticLinesFromQ(const std::vector<double>& distinctQ, const SyntheticLineOptions& o) {
  std::vector<double> lines;
  for (const double q : distinctQ) {
    const double t = twoThetaFromQ(q, o.wavelength);
    if (std::isfinite(t)) lines.push_back(t);
  }
  if (o.resolution > 0.0) lines = mergeWithinResolution(lines, o.resolution);
  if (o.maxLines > 0 && lines.size() > static_cast<std::size_t>(o.maxLines)) lines.resize(static_cast<std::size_t>(o.maxLines));

  std::mt19937 random(o.seed);
  for (int n = 0; n < o.drop && lines.size() > 3; ++n) {
    std::uniform_int_distribution<std::size_t> pick(3, lines.size() - 1);
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(pick(random)));
  }
  if (!lines.empty() && o.impurities > 0) {
    std::uniform_real_distribution<double> where(lines.front(), lines.back());
    for (int n = 0; n < o.impurities; ++n) lines.push_back(where(random));
  }
  if (o.noise > 0.0) {
    std::normal_distribution<double> error(0.0, o.noise);
    for (double& t : lines) t += error(random);
  }
  for (double& t : lines) t += o.zero;
  std::sort(lines.begin(), lines.end());
  return lines;
}

}  // namespace quarvel
