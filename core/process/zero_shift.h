// Zero shift: moves the 2θ axis of the current pattern, its background, its as-loaded copy and
// its calculated profile by a constant.
#pragma once

namespace quarvel {

class PatternStore;

// Adds `shift` to start and end of slots 1 to 4. With `maintainSteps` and a shift that is not a
// whole number of steps, slot 1 is re-sampled by a natural cubic spline onto the points of its
// original grid that lie inside the shifted range (one point fewer), and slots 1 to 4 take the
// new start of slot 1. Returns true when slot 1 was re-sampled. The caller rebuilds the axis
// table.
bool zeroShiftSlots(PatternStore& store, float shift, bool maintainSteps);

// The part of `shift` that is not a whole number of steps (towards zero), as the re-sampling
// decision sees it. A remainder within 1.0e-7 of zero or of a full step counts as zero: a shift
// typed as a whole number of steps must never re-sample, whatever the binary rounding of the
// decimal values.
float offGridRemainder(float shift, float step);

}  // namespace quarvel
