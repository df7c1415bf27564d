#include "core/process/convert.h"

#include <cmath>
#include <vector>

#include "core/pattern/pattern_store.h"
#include "core/process/spline.h"

namespace quarvel {
namespace {

constexpr float kDegreesPerRadian = 57.29578f;

// Converted (2θ', y) pairs in ascending 2θ'.
void convertPoints(const PatternSlot& slot, float ratio, std::vector<float>& x, std::vector<float>& y) {
  x.reserve(static_cast<std::size_t>(slot.count));
  y.reserve(static_cast<std::size_t>(slot.count));
  for (int i = 0; i < slot.count; ++i) {
    const float theta = slot.x(i) * 0.5f / kDegreesPerRadian;
    const float s = ratio * std::sin(theta);
    if (!(std::fabs(s) <= 1.0f)) continue;
    const float twoTheta = 2.0f * std::asin(s) * kDegreesPerRadian;
    if (!x.empty() && !(twoTheta > x.back())) continue;  // the spline needs ascending abscissae
    x.push_back(twoTheta);
    y.push_back(slot.y[static_cast<std::size_t>(i)]);
  }
}

}  // namespace

int convertGridCount(float start, float stop, float step) {
  if (!(step > 0.0f) || !(stop >= start)) return 0;
  const double n = std::floor(static_cast<double>(stop - start) / static_cast<double>(step) + 1.0e-3) + 1.0;
  return n > kMaxPoints ? kMaxPoints : static_cast<int>(n);
}

bool convertPattern(PatternSlot& slot, const ConvertSettings& c) {
  const int count = convertGridCount(c.start, c.stop, c.step);
  if (count == 0 || !(c.oldWavelength > 0.0f) || !(c.newWavelength > 0.0f)) return false;
  std::vector<float> x, y;
  convertPoints(slot, c.newWavelength / c.oldWavelength, x, y);
  if (x.size() < 2) return false;

  const CubicSpline spline(x, y);
  std::span<float> out{slot.y.data(), static_cast<std::size_t>(count)};
  spline.resampleGrid(c.start, c.step, out);
  // No extrapolation: the pattern was not measured there.
  const float tolerance = 1.0e-3f * c.step;
  for (int i = 0; i < count; ++i) {
    const float g = c.start + static_cast<float>(i) * c.step;
    if (g < x.front() - tolerance || g > x.back() + tolerance) out[static_cast<std::size_t>(i)] = 0.0f;
  }
  slot.start = c.start;
  slot.step = c.step;
  slot.count = count;
  slot.recomputeEnd();
  slot.wavelength = c.newWavelength;
  return true;
}

}  // namespace quarvel
