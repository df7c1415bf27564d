// Script files: a fixed chain of operations replayed over lists of pattern files. Line 1 and 2
// name the input and output list files; then "INFM", the chosen operations in a fixed order,
// and "UTFM", each a four-letter keyword in columns 1-4 followed by 10-character right-justified
// parameter fields.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/process/process_settings.h"

namespace quarvel {

// Input format codes: 1 gdf, 2 xy, 3 std, 4 udf, 5 (offered as xrdml) read with the chi reader.
// Output format codes: 1 gdf, 2 xy, 3 xyw, 4 std, 5 Add-up.
inline constexpr int kAddUpOutput = 5;
inline constexpr int kMaxAddUpPoints = 10000;

struct ScriptDefinition {
  std::string inputList, outputList;
  int inputFormat = 2;
  int outputFormat = 2;
  std::optional<float> zeroShift;
  std::optional<std::pair<float, float>> truncate;
  std::optional<double> scale;
  std::optional<int> smooth;
  std::optional<int> savitzkyGolay;
  std::optional<int> background;
  std::optional<ConvertSettings> convert;  // old and new wavelength, start, stop, step
};

// Drops the commands whose values make them void (zero shift 0, both truncate limits 0,
// smoothing below 3, Savitzky-Golay below 5) and caps Savitzky-Golay at 25.
ScriptDefinition withoutVoidCommands(ScriptDefinition script);

// The lines of the script file, in the fixed order INFM, ZERO, TRUN, SCAL, SMOO, SAGO, BKGR,
// CONV, UTFM after the two list names.
std::vector<std::string> scriptLines(const ScriptDefinition& script);

enum class ScriptKeyword { Infm, Zero, Trun, Scal, Smoo, Sago, Bkgr, Conv, Utfm, Unknown };

struct ScriptCommand {
  ScriptKeyword keyword = ScriptKeyword::Unknown;
  std::string name;             // the four letters as written
  std::vector<double> values;   // the parameters, when all could be read
  bool readable = false;
};

// Reads a command line: the keyword from columns 1-4, the parameters as free numbers (so the
// fixed 10-character fields and hand-written blank-separated values both read).
ScriptCommand parseScriptCommand(std::string_view line);
// The number of parameters a keyword needs.
std::size_t parameterCount(ScriptKeyword keyword);

}  // namespace quarvel
