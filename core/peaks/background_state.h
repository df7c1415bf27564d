// State of the Background menu: which background is loaded and the settings kept between uses.
#pragma once

#include <array>
#include <string>

namespace quarvel {

enum class BackgroundType : int { None = 0, Foil = 1, Tape = 2, Capillary = 3, UserDefined = 4, Refined = 5 };

struct BackgroundState {
  BackgroundType type = BackgroundType::None;
  std::array<std::string, 5> files;  // one per type 1..5 (index type - 1)
  double scaleFactor = 1.0;
  float intervalLow = 0.0f, intervalHigh = 0.0f;
  bool weightedAverage = false;
  int autoSmoothingFactor = 201;  // window of the automatic background, points (script BKGR)
  double autoScale = 1.0;         // factor on the automatic background before it is subtracted
};

}  // namespace quarvel
