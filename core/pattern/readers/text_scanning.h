// Small scanners shared by the readers: number lists as a list-directed read sees them,
// "key = value" header lines as instruments really write them, and the trailing-point rule.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/pattern/readers/scan_data.h"

namespace quarvel {

// The value after `key` when `line` starts with it (blanks allowed around the "=" or ","
// separator), with surrounding quotes and a trailing ",/" removed; nullopt otherwise.
// `key` is given without the separator, e.g. "_WL1".
std::optional<std::string> headerValue(std::string_view line, std::string_view key);
// Same, read as the first number of the value.
std::optional<double> headerNumber(std::string_view line, std::string_view key);

// The number of points that remain once trailing points failing `keep` are dropped.
template <class Keep>
int keptCount(std::span<const float> y, Keep keep) {
  int n = static_cast<int>(y.size());
  while (n > 0 && !keep(y[static_cast<std::size_t>(n) - 1])) --n;
  return n;
}

// A remark for the notes when 2θ values read from a file are not equally spaced on the model
// start + i * step (largest deviation above half a step: values printed with few decimals stay quiet); nullopt when they are.
std::optional<std::string> unevenStepRemark(std::span<const double> twoTheta, double start, double step);

// True when the line holds nothing but blanks and tabs.
bool isBlank(std::string_view line);

}  // namespace quarvel

namespace quarvel {
// A value read from a file as a float; nullopt when it does not fit (the value then counts as
// unreadable, like text).
std::optional<float> asFloat(double value);
}  // namespace quarvel
