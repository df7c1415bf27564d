#include "core/process/intensity_operations.h"

#include <algorithm>

#include "core/pattern/pattern_store.h"

namespace quarvel {

void liftToNonNegative(std::span<float> y) {
  float lowest = 1.0e30f;
  for (float v : y) lowest = std::min(lowest, v);
  if (lowest >= 0.0f) return;
  for (float& v : y) v -= lowest;
}

bool isZeroPolynomial(const std::array<float, 6>& a) {
  return std::all_of(a.begin(), a.end(), [](float c) { return c == 0.0f; });
}

void addPolynomial(PatternSlot& slot, const std::array<float, 6>& a) {
  if (isZeroPolynomial(a)) return;
  for (int i = 0; i < slot.count; ++i) {
    const float x = slot.x(i);
    float power = 1.0f;
    float sum = 0.0f;
    for (float coefficient : a) {
      sum += coefficient * power;
      power *= x;
    }
    slot.y[static_cast<std::size_t>(i)] += sum;
  }
  liftToNonNegative(slot.data());
}

void scaleIntensities(PatternSlot& slot, double factor) {
  for (float& v : slot.data()) v = static_cast<float>(factor * static_cast<double>(v));
  liftToNonNegative(slot.data());
}

void zeroExcludedPoints(PatternStore& store, int slotIndex, const std::vector<ExcludedRegion>& regions) {
  const PatternSlot& grid = store.slot(slotIndex);
  PatternSlot* targets[] = {&store.slot(kSlotPattern), &store.slot(kSlotAsLoaded), &store.slot(kSlotCalculated)};
  for (int i = 0; i < grid.count; ++i) {
    const float x = grid.x(i);
    const bool excluded = std::any_of(regions.begin(), regions.end(),
                                      [x](const ExcludedRegion& r) { return r.low < x && x < r.high; });
    if (!excluded) continue;
    for (PatternSlot* t : targets) t->y[static_cast<std::size_t>(i)] = 0.0f;
  }
}

}  // namespace quarvel
