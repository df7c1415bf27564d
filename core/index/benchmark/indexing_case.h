// Indexing test cases: a line list with the wavelength and the cell it is known to have. Read
// from the case files of the shared test data (a '#' header with WAVELENGTH and KNOWN_CELL,
// then the lines as published), or made synthetically.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/index/lattice/centring.h"
#include "core/index/lattice/crystal_system.h"

namespace quarvel {

struct IndexingCase {
  std::string name;
  double wavelength = 1.5406;
  std::vector<double> twoTheta;  // degrees, ascending
  CellParameters knownCell;
  Centring centring = Centring::P;
  CrystalSystem system = CrystalSystem::Triclinic;  // rhombohedral lattices on hexagonal axes: Hexagonal, R
};

// One case file; nullopt with `error` naming the file and line when it cannot be read.
std::optional<IndexingCase> readIndexingCase(const std::filesystem::path& path, std::string& error);

// Every *.txt case file of a folder, by name; unreadable files are skipped with their error in
// `errors`.
std::vector<IndexingCase> readIndexingCases(const std::filesystem::path& folder, std::vector<std::string>& errors);

}  // namespace quarvel
