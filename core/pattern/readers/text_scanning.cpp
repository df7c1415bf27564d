#include "core/pattern/readers/text_scanning.h"

#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "core/common/numbers.h"

namespace quarvel {

std::optional<std::string> headerValue(std::string_view line, std::string_view key) {
  std::size_t i = 0;
  while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
  if (line.substr(i, key.size()) != key) return std::nullopt;
  i += key.size();
  while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
  if (i >= line.size() || (line[i] != '=' && line[i] != ',')) return std::nullopt;
  std::string value = trim(line.substr(i + 1));
  if (value.size() >= 2 && value.compare(value.size() - 2, 2, ",/") == 0) value = trim(value.substr(0, value.size() - 2));
  if (value.size() >= 2 && (value.front() == '\'' || value.front() == '"') && value.back() == value.front())
    value = value.substr(1, value.size() - 2);
  return value;
}

std::optional<double> headerNumber(std::string_view line, std::string_view key) {
  auto value = headerValue(line, key);
  if (!value) return std::nullopt;
  auto numbers = readFreeNumbers(*value);
  if (numbers.empty()) return std::nullopt;
  return numbers.front();
}

std::optional<std::string> unevenStepRemark(std::span<const double> twoTheta, double start, double step) {
  if (twoTheta.size() < 3 || step == 0.0) return std::nullopt;
  double worst = 0.0;
  for (std::size_t i = 0; i < twoTheta.size(); ++i)
    worst = std::max(worst, std::fabs(twoTheta[i] - (start + static_cast<double>(i) * step)));
  if (worst <= 0.5 * std::fabs(step)) return std::nullopt;
  return fmt::format("2theta steps are not equidistant (largest deviation {:.4f} deg); "
                     "the pattern is kept on the mean step {:.6f}", worst, step);
}

bool isBlank(std::string_view line) {
  return line.find_first_not_of(" \t") == std::string_view::npos;
}

}  // namespace quarvel

namespace quarvel {
std::optional<float> asFloat(double value) {
  if (!(std::fabs(value) <= static_cast<double>(std::numeric_limits<float>::max()))) return std::nullopt;
  return static_cast<float>(value);
}
}  // namespace quarvel
