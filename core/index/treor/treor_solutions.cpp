#include "core/index/treor/treor_solutions.h"

#include "core/common/numbers.h"

namespace quarvel {

namespace {

// A value and the angle beside it: columns 7-16 and 38-47.
bool readEdgeAndAngle(const std::string& line, float& edge, float& angle) {
  const auto e = readField(line, 7, 10);
  const auto a = readField(line, 38, 10);
  if (!e || !a) return false;
  edge = static_cast<float>(*e);
  angle = static_cast<float>(*a);
  return true;
}

}  // namespace

SolutionTableRead readTreorSolutions(const std::vector<std::string>& reportLines) {
  SolutionTableRead result;
  std::size_t i = 0;
  std::string line;
  auto next = [&] {
    if (i == reportLines.size()) return false;
    line = reportLines[i++];
    return true;
  };
  while (static_cast<int>(result.solutions.size()) < kMaxIndexingSolutions && next()) {
    if (line.compare(0, 6, "   A =") != 0) continue;
    IndexingSolution s;
    bool ok = readEdgeAndAngle(line, s.a, s.alpha);
    ok = ok && next() && readEdgeAndAngle(line, s.b, s.beta);
    ok = ok && next() && readEdgeAndAngle(line, s.c, s.gamma);
    std::optional<double> volume;
    ok = ok && next() && (volume = readField(line, 22, 10)).has_value();
    if (!ok) {
      result.error = "Read Error";
      return result;
    }
    s.volume = static_cast<float>(*volume);
    bool merit = false;
    while (next()) {
      if (line.compare(0, 8, " M-TEST=") != 0) continue;
      const auto m = readField(line, 9, 5);
      const auto nix = readField(line, 37, 5);
      if (!m || !nix) {
        result.error = "Read Error";
        return result;
      }
      s.merit = static_cast<float>(*m);
      s.nix = static_cast<float>(*nix);
      merit = true;
      break;
    }
    if (!merit) {
      result.error = "Read Error";
      return result;
    }
    result.solutions.push_back(s);
  }
  if (result.solutions.empty()) result.error = "No indexing solutions found";
  return result;
}

}  // namespace quarvel
