// State of the Index menu kept for the whole run: the parameters of the two indexing jobs (a
// second run offers the values of the first), the last report read or written, the solution
// table read back from it, the cell shown by the refinement dialog and the reflection markers
// drawn on the pattern.
#pragma once

#include <string>
#include <vector>

#include "core/index/indexing_solution.h"
#include "core/index/ito/ito_input_file.h"
#include "core/index/treor/treor_job_file.h"

namespace quarvel {

struct UnitCell {
  double a = 10.0, b = 10.0, c = 10.0;
  double alpha = 90.0, beta = 90.0, gamma = 90.0;
};

// The TREOR90 dialog's values beyond what goes into the input file.
struct TreorJobSettings {
  TreorJob job;
  std::string inputFile;       // blank: "treor90.tre"
  double maxCellEdge = 100.0;  // shown and kept, written to no file
};

// The ITO dialog's values beyond what goes into the input deck.
struct ItoJobSettings {
  // Wavelength 0 until the first dialog: not positive means the pattern's wavelength.
  ItoJob job = [] {
    ItoJob j;
    j.wavelength = 0.0;
    return j;
  }();
  std::string inputFile;  // blank: "ito.inp"
  int inputForm = 3;      // kept for the dialog; the engine tells 2θ, q and d apart itself
};

struct IndexingState {
  TreorJobSettings treor;
  ItoJobSettings ito;
  std::string outputFile;  // last report run or read; blank: the next command asks
  std::vector<IndexingSolution> solutions;

  UnitCell cell;
  std::string spaceGroup = "P 1";
  double twoThetaZero = 0.0;              // added to every reflection marker
  std::vector<float> reflectionMarkers;  // 2θ positions drawn as tick marks

  void resetCell() {
    cell = UnitCell();
    spaceGroup = "P 1";
  }
};

}  // namespace quarvel
