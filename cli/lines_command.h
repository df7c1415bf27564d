// `quarvel-cli lines`: the lines of a cell as a peak file (2θ in columns 1-15), optionally with
// noise, a zero shift, missing and impurity lines, to check a cell against measured peaks or to
// make indexing problems.
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>

namespace CLI {
class App;
}

namespace quarvel {

struct LinesRequest {
  std::array<double, 6> cell{};  // a b c α β γ
  std::string centring = "P";
  int laue = 1;
  double wavelength = 1.5406;
  double maxTwoTheta = 90.0;
  double noise = 0.0;
  double zero = 0.0;
  int drop = 0;
  int impurities = 0;
  std::uint32_t seed = 1;
};

// Writes the line list; returns an error text (and writes nothing) for a request that cannot
// make lines.
std::string printLines(std::ostream& out, const LinesRequest& request);

void addLinesCommand(CLI::App& app, std::ostream& out);

}  // namespace quarvel
