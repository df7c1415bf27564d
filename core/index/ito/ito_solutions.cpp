#include "core/index/ito/ito_solutions.h"

#include <array>
#include <optional>

#include "core/common/numbers.h"

namespace quarvel {
namespace {

std::optional<double> field(const std::string& line, std::size_t first, std::size_t width) {
  if (line.size() < first) return std::nullopt;
  return readField(line, first, width);
}

}  // namespace

SolutionTableRead readItoSolutions(const std::vector<std::string>& lines) {
  SolutionTableRead read;
  auto fail = [&read](const char* message) {
    read.error = message;
    return read;
  };
  std::size_t i = 0;
  while (i < lines.size() && lines[i].find("q(a)") == std::string::npos) ++i;
  if (i == lines.size()) return fail("No indexing solutions found");
  for (++i; i < lines.size() && read.solutions.size() < kMaxIndexingSolutions; ++i) {
    const auto indexed = field(lines[i], 60, 5);
    const auto merit = field(lines[i], 68, 6);
    if (!indexed || !merit) break;
    IndexingSolution s;
    s.nix = static_cast<float>(*indexed);
    s.merit = static_cast<float>(*merit);
    read.solutions.push_back(s);
  }
  if (read.solutions.empty()) return fail("No indexing solutions found");
  while (i < lines.size() && lines[i].find("a        b") == std::string::npos) ++i;
  if (i == lines.size()) return fail("Read Error");
  ++i;
  for (auto& s : read.solutions) {
    if (i >= lines.size()) return fail("Read Error");
    const std::string& line = lines[i++];
    std::array<double, 7> v{};
    for (std::size_t f = 0; f < 6; ++f) {
      const auto value = field(line, 2 + 9 * f, 9);
      if (!value) return fail("Read Error");
      v[f] = *value;
    }
    const auto volume = field(line, 56, 12);
    if (!volume) return fail("Read Error");
    v[6] = *volume;
    s.a = static_cast<float>(v[0]);
    s.b = static_cast<float>(v[1]);
    s.c = static_cast<float>(v[2]);
    s.alpha = static_cast<float>(v[3]);
    s.beta = static_cast<float>(v[4]);
    s.gamma = static_cast<float>(v[5]);
    s.volume = static_cast<float>(v[6]);
  }
  return read;
}

}  // namespace quarvel
