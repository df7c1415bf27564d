// Convert: re-expresses a pattern for another wavelength on another 2θ grid.
#pragma once

#include "core/process/process_settings.h"

namespace quarvel {

struct PatternSlot;

// Points of the grid start, start + step, ... up to stop (within rounding), at most kMaxPoints;
// 0 for a step that is not positive or a stop below the start.
int convertGridCount(float start, float stop, float step);

// Every point's 2θ is carried to the new wavelength by Bragg's law, sin θ' = (λnew/λold)·sin θ,
// and the intensities are re-sampled by the natural cubic spline on the grid of `c`. Points
// whose converted sine would exceed 1 cannot be observed at the new wavelength and are dropped;
// grid points outside the converted range get intensity zero. The slot takes the new grid and
// the new wavelength. Returns false, leaving the slot as it was, when the grid or the
// wavelengths are not usable or fewer than two points survive the conversion.
bool convertPattern(PatternSlot& slot, const ConvertSettings& c);

}  // namespace quarvel
