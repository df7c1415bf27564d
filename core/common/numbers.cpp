#include "core/common/numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace quarvel {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v'; }

std::string_view strip(std::string_view s) {
  while (!s.empty() && isBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && isBlank(s.back())) s.remove_suffix(1);
  return s;
}

}  // namespace

std::optional<double> parseNumber(std::string_view text) {
  std::string_view s = strip(text);
  if (!s.empty() && s.front() == '+') s.remove_prefix(1);
  if (s.empty()) return std::nullopt;
  std::string buffer;
  if (s.find_first_of("dD") != std::string_view::npos) {
    buffer.assign(s);
    std::replace_if(buffer.begin(), buffer.end(), [](char c) { return c == 'd' || c == 'D'; }, 'E');
    s = buffer;
  }
  double value = 0;
  const char* end = s.data() + s.size();
  auto [ptr, ec] = std::from_chars(s.data(), end, value);
  if (ec != std::errc() || ptr != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<long> parseInteger(std::string_view text) {
  std::string_view s = strip(text);
  if (!s.empty() && s.front() == '+') s.remove_prefix(1);
  if (s.empty()) return std::nullopt;
  long value = 0;
  const char* end = s.data() + s.size();
  auto [ptr, ec] = std::from_chars(s.data(), end, value);
  if (ec != std::errc() || ptr != end) return std::nullopt;
  return value;
}

namespace {

// Hands each number of a blank- or comma-separated line to `take` until a token does not read
// as a number or `take` returns false.
template <class Take>
void scanNumbers(std::string_view line, Take take) {
  std::size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && (isBlank(line[i]) || line[i] == ',')) ++i;
    std::size_t j = i;
    while (j < line.size() && !isBlank(line[j]) && line[j] != ',') ++j;
    if (j == i) break;
    auto value = parseNumber(line.substr(i, j - i));
    if (!value || !take(*value)) break;
    i = j;
  }
}

}  // namespace

std::vector<double> readFreeNumbers(std::string_view line) {
  std::vector<double> values;
  scanNumbers(line, [&values](double v) {
    values.push_back(v);
    return true;
  });
  return values;
}

std::size_t readLeadingNumbers(std::string_view line, std::span<double> out) {
  std::size_t count = 0;
  if (out.empty()) return 0;
  scanNumbers(line, [&](double v) {
    out[count++] = v;
    return count < out.size();
  });
  return count;
}

std::optional<double> readField(std::string_view line, std::size_t firstColumn, std::size_t width) {
  if (firstColumn == 0 || firstColumn > line.size()) return std::nullopt;
  std::string_view field = strip(line.substr(firstColumn - 1, width));
  if (field.empty()) return std::nullopt;
  return parseNumber(field);
}

std::optional<long> readIntField(std::string_view line, std::size_t firstColumn, std::size_t width) {
  if (firstColumn == 0 || firstColumn > line.size()) return std::nullopt;
  std::string_view field = strip(line.substr(firstColumn - 1, width));
  if (field.empty()) return std::nullopt;
  return parseInteger(field);
}

std::string formatF(double value, int width, int decimals) {
  if (!std::isfinite(value)) return std::string(static_cast<std::size_t>(width), '*');
  char buffer[512];
  int n = std::snprintf(buffer, sizeof buffer, "%*.*f", width, decimals, value);
  // "-0.000" prints as such in Fortran too; keep it.
  if (n < 0 || n > width) return std::string(static_cast<std::size_t>(width), '*');
  return buffer;
}

std::string formatI(long value, int width) {
  char buffer[64];
  int n = std::snprintf(buffer, sizeof buffer, "%*ld", width, value);
  if (n < 0 || n > width) return std::string(static_cast<std::size_t>(width), '*');
  return buffer;
}

std::string formatE(double value, int width, int decimals) {
  if (!std::isfinite(value)) return std::string(static_cast<std::size_t>(width), '*');
  int exponent = 0;
  double mantissa = 0.0;
  if (value != 0.0) {
    exponent = static_cast<int>(std::floor(std::log10(std::fabs(value)))) + 1;
    mantissa = value / std::pow(10.0, exponent);
    // Rounding to `decimals` digits may carry into the next decade.
    const double scale = std::pow(10.0, decimals);
    if (std::round(std::fabs(mantissa) * scale) >= scale) {
      mantissa /= 10.0;
      ++exponent;
    }
  }
  char buffer[128];
  std::snprintf(buffer, sizeof buffer, "%.*fE%c%02d", decimals, mantissa, exponent < 0 ? '-' : '+',
                std::abs(exponent));
  return padLeft(buffer, static_cast<std::size_t>(width));
}

std::string padRight(std::string_view text, std::size_t width) {
  std::string out(text.substr(0, width));
  out.resize(width, ' ');
  return out;
}

std::string padLeft(std::string_view text, std::size_t width) {
  if (text.size() >= width) return std::string(text.substr(0, width));
  return std::string(width - text.size(), ' ') + std::string(text);
}

std::string shortestFloatText(float value) {
  char buffer[64];
  auto [ptr, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
  if (ec != std::errc()) return "0";
  return std::string(buffer, ptr);
}

long nint(double value) { return static_cast<long>(std::lround(value)); }

std::string trim(std::string_view text) { return std::string(strip(text)); }

std::string toLower(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return out;
}

std::string toUpper(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return out;
}

bool startsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

}  // namespace quarvel
