#include "core/index/lattice/reciprocal_metric.h"

#include <cmath>

#include "core/index/lattice/units.h"

namespace quarvel {

Mat3 ReciprocalMetric::tensor() const {
  Mat3 g;
  g(0, 0) = A;
  g(1, 1) = B;
  g(2, 2) = C;
  g(1, 2) = g(2, 1) = 0.5 * D;
  g(0, 2) = g(2, 0) = 0.5 * E;
  g(0, 1) = g(1, 0) = 0.5 * F;
  return g;
}

ReciprocalMetric ReciprocalMetric::fromTensor(const Mat3& g) {
  return {g(0, 0), g(1, 1), g(2, 2), 2.0 * g(1, 2), 2.0 * g(0, 2), 2.0 * g(0, 1)};
}

Mat3 directMetric(const CellParameters& cell) {
  const double ca = std::cos(cell.alpha * kDegree), cb = std::cos(cell.beta * kDegree),
               cg = std::cos(cell.gamma * kDegree);
  Mat3 g;
  g(0, 0) = cell.a * cell.a;
  g(1, 1) = cell.b * cell.b;
  g(2, 2) = cell.c * cell.c;
  g(0, 1) = g(1, 0) = cell.a * cell.b * cg;
  g(0, 2) = g(2, 0) = cell.a * cell.c * cb;
  g(1, 2) = g(2, 1) = cell.b * cell.c * ca;
  return g;
}

std::optional<CellParameters> cellFromDirectMetric(const Mat3& g) {
  if (!isPositiveDefinite(g)) return std::nullopt;
  CellParameters cell;
  cell.a = std::sqrt(g(0, 0));
  cell.b = std::sqrt(g(1, 1));
  cell.c = std::sqrt(g(2, 2));
  cell.alpha = std::acos(g(1, 2) / (cell.b * cell.c)) / kDegree;
  cell.beta = std::acos(g(0, 2) / (cell.a * cell.c)) / kDegree;
  cell.gamma = std::acos(g(0, 1) / (cell.a * cell.b)) / kDegree;
  return cell;
}

ReciprocalMetric metricFromCell(const CellParameters& cell) {
  return ReciprocalMetric::fromTensor(inverse(directMetric(cell)));
}

std::optional<CellParameters> cellFromMetric(const ReciprocalMetric& metric) {
  if (!isPositiveDefinite(metric)) return std::nullopt;
  return cellFromDirectMetric(inverse(metric.tensor()));
}

double cellVolume(const CellParameters& cell) {
  const double det = determinant(directMetric(cell));
  return det > 0.0 ? std::sqrt(det) : 0.0;
}

double cellVolume(const ReciprocalMetric& metric) {
  const double det = determinant(metric.tensor());
  return det > 0.0 ? 1.0 / std::sqrt(det) : 0.0;
}

bool isPositiveDefinite(const Mat3& g) {
  if (!(g(0, 0) > 0.0)) return false;
  if (!(g(0, 0) * g(1, 1) - g(0, 1) * g(1, 0) > 0.0)) return false;
  return determinant(g) > 0.0;
}

bool isPositiveDefinite(const ReciprocalMetric& metric) { return isPositiveDefinite(metric.tensor()); }

}  // namespace quarvel
