// The peak positions an indexing job takes from a peak file: the number in columns 1-15 of each
// record, read until a record does not hold one, at most 1000.
#pragma once

#include <string>
#include <vector>

namespace quarvel {

inline constexpr std::size_t kMaxIndexingPeaks = 1000;

std::vector<double> readPeakPositions(const std::vector<std::string>& records);

}  // namespace quarvel
