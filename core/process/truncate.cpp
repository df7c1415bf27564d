#include "core/process/truncate.h"

#include "core/pattern/pattern_store.h"

namespace quarvel {
namespace {

bool inRange(float x, float lower, float upper) { return lower <= x && x <= upper; }

void cutSlot(PatternSlot& slot, float lower, float upper) {
  int kept = 0;
  float first = 0.0f;
  float last = 0.0f;
  for (int i = 0; i < slot.count; ++i) {
    const float x = slot.x(i);
    if (!inRange(x, lower, upper)) continue;
    if (kept == 0) first = x;
    last = x;
    slot.y[static_cast<std::size_t>(kept++)] = slot.y[static_cast<std::size_t>(i)];
  }
  slot.count = kept;
  slot.start = kept > 0 ? first : 0.0f;
  slot.end = kept > 0 ? last : 0.0f;
}

void zeroOutside(PatternSlot& slot, float lower, float upper) {
  for (int i = 0; i < slot.count; ++i)
    if (!inRange(slot.x(i), lower, upper)) slot.y[static_cast<std::size_t>(i)] = 0.0f;
}

}  // namespace

void truncateSlots(PatternStore& store, float lower, float upper) {
  if (store.multipleCount > 0) {
    zeroOutside(store.slot(store.selection.currentSlot), lower, upper);
    return;
  }
  for (int index = 1; index <= kSlotCount; ++index) {
    PatternSlot& slot = store.slot(index);
    if (slot.start < lower || slot.end > upper) cutSlot(slot, lower, upper);
  }
}

}  // namespace quarvel
