// The Modify operations on a session, without dialogs. A script runner sets
// session.flags.scriptRunning and calls these: no dialog, no undo copy, no refresh. Called
// without scriptRunning they keep the undo copy and refresh, like the menu commands (which add
// only their dialog in front). Each stores its parameters as the remembered settings, so the
// next dialog opens with them. Each returns true when the operation was carried out.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "core/app/operation.h"
#include "core/process/process_settings.h"

namespace quarvel {

class Session;

bool applyZeroShift(Session& s, float shift, bool maintainSteps);
bool applyTruncate(Session& s, float lower, float upper);
// At most 25 regions are kept; further ones are ignored.
bool applyExcludedRegions(Session& s, std::vector<ExcludedRegion> regions);
// All six coefficients zero: nothing happens, not even the undo copy.
bool applyAddPolynomial(Session& s, const std::array<float, 6>& coefficients);
bool applyScale(Session& s, double factor);
// A factor below 2 does nothing.
bool applySmooth(Session& s, int factor);
bool applySavitzkyGolay(Session& s, int window);
// Fits the background into slot 2 and writes the fit's lines to the notes; a singular system
// shows "Matrix inversion error" and changes nothing.
bool applyChebyshevFit(Session& s, int order);
bool applyConvert(Session& s, const ConvertSettings& grid);
bool applyLpCorrections(Session& s, int choice);
// Forward correction unless `reverse`.
bool applyAutoDivergence(Session& s, bool reverse = false);
// Keeps the undo copy (unless a script runs) even when μt <= 0 makes the correction void.
bool applyFlatPlate(Session& s, float inclination, float muThickness);
// New intensities for the points of the current slot (at most its count are used).
bool applyEditedIntensities(Session& s, std::span<const float> intensities);

// The operations inside the common frame, working from the session's remembered settings. The
// menu commands fill in `askUser` with their dialog.
namespace modify {
Operation zeroShift();
Operation truncate();
Operation excludedRegions();
Operation addPolynomial();
Operation scale();
Operation smooth();
Operation savitzkyGolay();
Operation chebyshevFit();
Operation convert();
Operation lpCorrections();
}  // namespace modify

}  // namespace quarvel
