// The open summary file, to which patterns are added as columns.
#pragma once

#include <string>

namespace quarvel {

struct SummaryState {
  std::string path;
  bool open = false;
  int columns = 0;  // 0..100
};

}  // namespace quarvel
