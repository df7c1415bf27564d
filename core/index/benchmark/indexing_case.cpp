#include "core/index/benchmark/indexing_case.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "core/common/numbers.h"

namespace quarvel {

namespace {

// "cubic I", "rhombohedral R (hexagonal axes)", "monoclinic P (P 1 21/a 1)" ...
bool readSystem(const std::string& text, IndexingCase& c) {
  std::istringstream words(text);
  std::string system, lattice;
  words >> system >> lattice;
  system = toLower(system);
  if (system == "cubic") c.system = CrystalSystem::Cubic;
  else if (system == "tetragonal") c.system = CrystalSystem::Tetragonal;
  else if (system == "hexagonal" || system == "trigonal" || system == "rhombohedral") c.system = CrystalSystem::Hexagonal;
  else if (system == "orthorhombic") c.system = CrystalSystem::Orthorhombic;
  else if (system == "monoclinic") c.system = CrystalSystem::Monoclinic;
  else if (system == "triclinic") c.system = CrystalSystem::Triclinic;
  else return false;
  c.centring = lattice.size() == 1 ? centringFromLetter(lattice[0]) : Centring::P;
  return true;
}

}  // namespace

std::optional<IndexingCase> readIndexingCase(const std::filesystem::path& path, std::string& error) {
  std::ifstream in(path);
  if (!in) {
    error = path.string() + ": cannot be opened";
    return std::nullopt;
  }
  IndexingCase c;
  c.name = path.stem().string();
  // Conograph peak tables: number, 2θ, height, FWHM, flag (1 = used for indexing).
  const bool flaggedTable = startsWith(c.name, "conograph_");
  bool haveWavelength = false, haveCell = false;
  int lineNumber = 0;
  for (std::string line; std::getline(in, line);) {
    ++lineNumber;
    auto fail = [&](const std::string& what) {
      error = path.string() + ", line " + std::to_string(lineNumber) + ": " + what;
    };
    if (startsWith(line, "#")) {
      const std::string body = trim(line.substr(1));
      if (startsWith(body, "WAVELENGTH")) {
        const auto values = readFreeNumbers(body.substr(10));
        if (values.empty() || values[0] <= 0) return fail("no wavelength"), std::nullopt;
        c.wavelength = values[0];
        haveWavelength = true;
      } else if (startsWith(body, "KNOWN_CELL")) {
        const std::string rest = body.substr(10);
        const auto bar = rest.find('|');
        const auto values = readFreeNumbers(rest.substr(0, bar));
        if (values.size() < 6 || bar == std::string::npos) return fail("KNOWN_CELL needs six values and a system"), std::nullopt;
        c.knownCell = {values[0], values[1], values[2], values[3], values[4], values[5]};
        const auto bar2 = rest.find('|', bar + 1);
        if (!readSystem(trim(rest.substr(bar + 1, bar2 - bar - 1)), c)) return fail("unknown crystal system"), std::nullopt;
        haveCell = true;
      }
      continue;
    }
    if (trim(line).empty()) continue;
    const auto values = readFreeNumbers(line);
    if (flaggedTable) {
      if (values.size() < 5) return fail("expected five columns"), std::nullopt;
      if (values[4] == 1.0) c.twoTheta.push_back(values[1]);
    } else {
      if (values.empty()) return fail("no 2-theta value"), std::nullopt;
      c.twoTheta.push_back(values[0]);
    }
  }
  if (!haveWavelength || !haveCell || c.twoTheta.empty()) {
    error = path.string() + ": WAVELENGTH, KNOWN_CELL or lines missing";
    return std::nullopt;
  }
  std::sort(c.twoTheta.begin(), c.twoTheta.end());
  return c;
}

std::vector<IndexingCase> readIndexingCases(const std::filesystem::path& folder, std::vector<std::string>& errors) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    if (entry.is_regular_file() && entry.path().extension() == ".txt") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  std::vector<IndexingCase> cases;
  for (const auto& file : files) {
    std::string error;
    if (auto c = readIndexingCase(file, error)) cases.push_back(std::move(*c));
    else errors.push_back(error);
  }
  return cases;
}

}  // namespace quarvel
