// The reflection markers drawn under the pattern: the 2θ positions of a cell's allowed
// reflections, shifted by the two-theta zero. Both "Plot ... solutions" commands and the
// unit-cell refinement mark reflections through here.
#pragma once

#include "core/index/indexing_state.h"
#include "core/index/lattice/centring.h"

namespace quarvel {

class Session;

inline constexpr int kLaueClassTriclinic = 1;  // "1bar": every hkl is its own class with -h-k-l

// Fills session.indexing.reflectionMarkers for the cell over the current pattern's 2θ range (0
// to 90° without a pattern) at the pattern's wavelength; returns their number. An impossible
// cell marks nothing.
int markReflections(Session& session, const UnitCell& cell, int laueClass, Centring centring);

}  // namespace quarvel
