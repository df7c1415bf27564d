#include "core/process/zero_shift.h"

#include <cmath>
#include <vector>

#include "core/pattern/pattern_store.h"
#include "core/process/spline.h"

namespace quarvel {
namespace {

constexpr float kWholeStepTolerance = 1.0e-7f;

// Re-samples slot 1, already shifted, onto the lattice start0 + k·step it had before the shift.
void resampleOntoOriginalGrid(PatternSlot& slot, float remainder) {
  const int n = slot.count;
  if (n < 2) return;
  std::vector<float> x(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = slot.x(i);
  // First lattice point inside the shifted range: the shifted start moved back by the
  // remainder, one step further in when the remainder is positive.
  const float newStart = slot.start - remainder + (remainder > 0.0f ? slot.step : 0.0f);
  // The spline reads the intensities it is overwriting, so it works from a copy.
  const std::vector<float> y(slot.data().begin(), slot.data().end());
  const CubicSpline spline(x, y);
  spline.resampleGrid(newStart, slot.step, slot.data().first(static_cast<std::size_t>(n - 1)));
  slot.count = n - 1;
  slot.start = newStart;
}

}  // namespace

float offGridRemainder(float shift, float step) {
  if (step == 0.0f) return 0.0f;
  const float r = std::fmod(shift, step);
  if (std::fabs(r) < kWholeStepTolerance) return 0.0f;
  if (std::fabs(std::fabs(step) - std::fabs(r)) < kWholeStepTolerance) return 0.0f;
  return r;
}

bool zeroShiftSlots(PatternStore& store, float shift, bool maintainSteps) {
  for (int index = kSlotPattern; index <= kSlotCalculated; ++index) {
    PatternSlot& slot = store.slot(index);
    slot.start += shift;
    slot.end += shift;
  }
  PatternSlot& pattern = store.pattern();
  const float remainder = offGridRemainder(shift, pattern.step);
  if (!maintainSteps || remainder == 0.0f || pattern.count < 2) return false;

  resampleOntoOriginalGrid(pattern, remainder);
  for (int index = kSlotPattern; index <= kSlotCalculated; ++index) {
    PatternSlot& slot = store.slot(index);
    slot.start = pattern.start;
    slot.end = slot.count > 0 ? slot.start + static_cast<float>(slot.count - 1) * slot.step : slot.start;
  }
  return true;
}

}  // namespace quarvel
