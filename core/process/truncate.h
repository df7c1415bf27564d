// Truncate: cuts the patterns to new 2θ limits.
#pragma once

namespace quarvel {

class PatternStore;

// Every slot whose start lies below `lower` or whose end lies above `upper` keeps only its points
// with lower <= 2θ <= upper, moved to the front; its start and end become the 2θ of the first
// and last kept point. A slot with no point in the range is left with count 0 and start 0.
// While multiple patterns are open only the current slot is touched, and its points outside the
// limits are set to zero instead (its axis stays, so the patterns remain comparable).
// The caller rebuilds the axis table.
void truncateSlots(PatternStore& store, float lower, float upper);

}  // namespace quarvel
