#include "core/pattern/pattern_store.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace quarvel {

void PatternSlot::copyFrom(const PatternSlot& other) {
  start = other.start;
  step = other.step;
  end = other.end;
  wavelength = other.wavelength;
  count = other.count;
  dAtLast = other.dAtLast;
  dAtFirst = other.dAtFirst;
  qAtFirst = other.qAtFirst;
  qAtLast = other.qAtLast;
  const int n = std::clamp(other.count, 0, kMaxPoints);
  std::copy_n(other.y.begin(), n, y.begin());
  written_ = std::max(written_, n);
}

void PatternSlot::clear() {
  // Zeroing stops at the furthest point this slot ever held: beyond it the storage is still
  // the untouched zeros it was allocated with.
  written_ = std::clamp(std::max(written_, count), 0, kMaxPoints);
  std::fill_n(y.begin(), written_, 0.0f);
  count = 0;
}

PatternStore::PatternStore() : axis_(kMaxPoints) {
  for (auto& table : multipleAxis_) table.resize(kMaxPoints);
}

PatternSlot& PatternStore::slot(int index) {
  if (index < 1 || index > kSlotCount) throw std::out_of_range("pattern slot out of range");
  return slots_[static_cast<std::size_t>(index - 1)];
}

const PatternSlot& PatternStore::slot(int index) const {
  if (index < 1 || index > kSlotCount) throw std::out_of_range("pattern slot out of range");
  return slots_[static_cast<std::size_t>(index - 1)];
}

void PatternStore::keepUndoCopy() {
  for (std::size_t s = 0; s < slots_.size(); ++s) undo_[s].copyFrom(slots_[s]);
  undoAvailable_ = true;
}

bool PatternStore::restoreUndoCopy() {
  if (!undoAvailable_) return false;
  for (std::size_t s = 0; s < slots_.size(); ++s) slots_[s].copyFrom(undo_[s]);
  undoAvailable_ = false;
  return true;
}

AxisPoint axisPointAt(float twoTheta, float wavelength) {
  AxisPoint p;
  p.twoTheta = twoTheta;
  const float theta = twoTheta * 0.5f / 57.29578f;
  p.d = wavelength * 0.5f / std::sin(theta);
  p.q = (std::isfinite(p.d) && p.d > 0.0f) ? 6.283185f / p.d : 0.0f;
  return p;
}

namespace {

void fillAxis(PatternSlot& slot, std::span<AxisPoint> table, float zero) {
  const int n = std::clamp(slot.count, 0, kMaxPoints);
  for (int j = 0; j < n; ++j) {
    const float twoTheta = static_cast<float>(j) * slot.step + slot.start + zero;
    table[static_cast<std::size_t>(j)] = axisPointAt(twoTheta, slot.wavelength);
  }
  if (n > 0) {
    slot.dAtLast = table[static_cast<std::size_t>(n - 1)].d;
    slot.dAtFirst = table[0].d;
    slot.qAtFirst = table[0].q;
    slot.qAtLast = table[static_cast<std::size_t>(n - 1)].q;
  }
}

}  // namespace

void PatternStore::rebuildAxisTable() {
  PatternSlot& current = slot(kSlotPattern);
  fillAxis(current, axis_, selection.zeroCorrection);
  PatternSlot& asLoaded = slot(kSlotAsLoaded);
  asLoaded.dAtLast = current.dAtLast;
  asLoaded.dAtFirst = current.dAtFirst;
  asLoaded.qAtFirst = current.qAtFirst;
  asLoaded.qAtLast = current.qAtLast;
  for (int m = 1; m <= std::clamp(multipleCount, 0, 4); ++m) {
    fillAxis(slot(kSlotMultiple1 + m - 1), multipleAxis_[static_cast<std::size_t>(m - 1)],
             selection.zeroCorrection);
  }
}

std::span<const AxisPoint> PatternStore::multipleAxisTable(int m) const {
  if (m < 1 || m > 4) throw std::out_of_range("multiple pattern out of range");
  return {multipleAxis_[static_cast<std::size_t>(m - 1)].data(),
          static_cast<std::size_t>(slot(kSlotMultiple1 + m - 1).count)};
}

}  // namespace quarvel
