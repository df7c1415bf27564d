// The keyword input file of the trial-and-error engine: a title line, one observed line per
// line (in the unit CHOICE names), a blank line, then KEYWORD=value cards separated by commas
// and closed by END*. The reader is a pure parser: the engine echoes what it read.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarvel {

// Defaults of the keywords the indexing job does not write are our own starting values (see
// docs/treor90.md); the job writes CHOICE, WAVE, VOL, NIX, MERIT, D1 and D2.
struct TreorKeywords {
  int choice = 3;            // 0 sin²θ, 1 1/d², 2 θ, 3 2θ, 4 d
  double wave = 1.54056;     // Å
  double vol = -2000.0;      // Å³; negative: every crystal system, shrinking low-symmetry limits
  int nix = 1;               // unindexed lines allowed among the first 20
  double merit = 10.0;       // M20 required
  double d1 = 0.0002;        // sin²θ window of the trial phase
  double d2 = 0.0004;        // sin²θ window of the refinement
  double ssqtl = 0.0;        // largest sin²θ of a test line; 0: no limit
  double cem = 25.0;         // largest cell edge, Å
  int testLines = 15;        // USE: number of test lines
  int iq = 0;                // indexed test lines required; 0: test lines − 1
  int printIq = 0;           // IQ from which trials are printed; 0: the required IQ
  int idiv = 1;              // flag higher orders among the first seven lines
  int select = 0;            // a line forced into every base-line set
  int monoset = 0;           // more monoclinic base-line sets
  int ks = 1;                // 1: stop after the stage of the first accepted cell (cubic-orthorhombic)
  int ths = 1;               // the same for the monoclinic and triclinic stages
  double molw = 0.0, dens = 0.0, edens = 0.0;  // molar weight, density, allowed density deviation
  double maxBeta = 125.0;    // degrees
};

struct TreorInput {
  std::string title;
  std::vector<double> values;  // as written, in the unit of `keywords.choice`
  TreorKeywords keywords;
};

struct TreorInputResult {
  std::optional<TreorInput> input;  // nullopt: a control card could not be read
  std::string badCard;              // the card that failed, for the report
};

TreorInputResult parseTreorInput(std::string_view text);

}  // namespace quarvel
