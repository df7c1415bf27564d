// State of the Index menu kept for the whole run: the cell shown by the refinement dialog and
// the reflection markers drawn on the pattern.
#pragma once

#include <string>
#include <vector>

namespace quarvel {

struct UnitCell {
  double a = 10.0, b = 10.0, c = 10.0;
  double alpha = 90.0, beta = 90.0, gamma = 90.0;
};

struct IndexingState {
  UnitCell cell;
  std::string spaceGroup = "P 1";
  std::vector<float> reflectionMarkers;  // 2θ positions drawn as tick marks

  void resetCell() {
    cell = UnitCell();
    spaceGroup = "P 1";
  }
};

}  // namespace quarvel
