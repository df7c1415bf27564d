#include "core/index/lattice/cell_density.h"

#include <algorithm>
#include <cmath>

namespace quarvel {

namespace {

// Avogadro's number times 10⁻²⁴ cm³ per Å³.
constexpr double kAvogadroPerCubicAngstrom = 0.60221408;

}  // namespace

double cellDensity(double volume, double molarWeight, int z) {
  return volume > 0 ? z * molarWeight / (kAvogadroPerCubicAngstrom * volume) : 0.0;
}

DensityFit densityFit(double volume, const DensityLimits& limits) {
  DensityFit best;
  if (!limits.active() || !(volume > 0)) return best;
  const double z = limits.density * kAvogadroPerCubicAngstrom * volume / limits.molarWeight;
  for (const double candidate : {std::floor(z), std::ceil(z)}) {
    const int n = std::max(1, static_cast<int>(candidate));
    const double density = cellDensity(volume, limits.molarWeight, n);
    if (best.z == 0 || std::abs(density - limits.density) < std::abs(best.density - limits.density))
      best = {n, density, false};
  }
  best.within = std::abs(best.density - limits.density) <= limits.allowed();
  return best;
}

}  // namespace quarvel
