#include "core/index/ito/ito_lines.h"

#include <algorithm>
#include <cmath>

#include "core/index/lattice/units.h"

namespace quarvel {

double qUnitsAt(double twoTheta, double wavelength) { return qUnitsFromQ(qFromTwoTheta(twoTheta, wavelength)); }
double twoThetaAtQUnits(double q, double wavelength) { return twoThetaFromQ(qFromQUnits(q), wavelength); }

ItoInputKind detectInputKind(const std::vector<double>& positive) {
  const std::size_t n = std::min<std::size_t>(6, positive.size());
  int rising = 0, falling = 0;
  for (std::size_t i = 1; i < n; ++i) {
    if (positive[i] > positive[i - 1]) ++rising;
    if (positive[i] < positive[i - 1]) ++falling;
  }
  if (falling > rising) return ItoInputKind::Spacing;
  const double largest = positive.empty() ? 0.0 : *std::max_element(positive.begin(), positive.end());
  // no angle exceeds 180°, while q-units of any useful line do
  return largest > 180.0 ? ItoInputKind::QUnits : ItoInputKind::TwoTheta;
}

ItoLines prepareLines(const std::vector<double>& values, const ItoParameters& parameters) {
  ItoLines lines;
  std::vector<double> positive;
  for (double v : values) {
    if (v < 0.0) {
      ++lines.dropped;
      continue;
    }
    if (v > 0.0) positive.push_back(v);
  }
  lines.kind = detectInputKind(positive);
  const double lambda = parameters.wavel;
  lines.wavelength = lambda;

  // Everything goes through 2θ so that the zero correction applies to every input kind.
  struct Line {
    double input, twoTheta;
  };
  std::vector<Line> converted;
  for (double v : positive) {
    double tt = v;
    if (lines.kind == ItoInputKind::QUnits) tt = twoThetaAtQUnits(v, lambda);
    if (lines.kind == ItoInputKind::Spacing) tt = twoThetaFromQ(qFromD(v), lambda);
    if (!std::isfinite(tt)) continue;
    converted.push_back({v, tt + parameters.zercor});
  }
  std::sort(converted.begin(), converted.end(), [](const Line& a, const Line& b) { return a.twoTheta < b.twoTheta; });
  lines.given = static_cast<int>(converted.size());

  const double tolDegrees = parameters.tolg / 100.0;
  for (const Line& line : converted) {
    if (lines.count() >= kItoMaxLines) break;
    const double q = qUnitsAt(line.twoTheta, lambda);
    const double tol = qUnitsFromQ(qToleranceFromTwoTheta(line.twoTheta, tolDegrees, lambda));
    if (!lines.q.empty()) {
      // equal within half the smaller tolerance: the same line entered twice
      const double limit = 0.5 * std::min(tol, lines.tolerance.back());
      if (q - lines.q.back() < limit) {
        lines.duplicates.push_back(line.input);
        continue;
      }
    }
    lines.twoTheta.push_back(line.twoTheta);
    lines.q.push_back(q);
    lines.tolerance.push_back(tol);
  }
  double sum = 0.0;
  for (double t : lines.tolerance) sum += t;
  lines.meanTolerance = lines.tolerance.empty() ? 0.0 : sum / static_cast<double>(lines.tolerance.size());
  lines.equalityLimit = lines.tolerance.empty() ? 0.0 : 0.5 * lines.tolerance.front();
  return lines;
}

}  // namespace quarvel
