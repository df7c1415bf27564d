#include "core/index/peak_positions.h"

#include "core/common/numbers.h"

namespace quarvel {

std::vector<double> readPeakPositions(const std::vector<std::string>& records) {
  std::vector<double> values;
  for (const std::string& record : records) {
    if (values.size() >= kMaxIndexingPeaks) break;
    const auto value = readField(record, 1, 15);
    if (!value) break;
    values.push_back(*value);
  }
  return values;
}

}  // namespace quarvel
