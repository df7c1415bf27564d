// What a reader makes of a pattern file before it goes into a store slot: the equidistant scan
// (start, step, intensities), the wavelengths and texts the file supplies, and remarks about
// what was unusual in the file. Parsing is kept apart from the store so that every reader can
// be tested and fuzzed on text alone.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "core/pattern/pattern_store.h"

namespace quarvel {

// Readers stop after this many points (deliberately below the 20000 capacity)...
inline constexpr int kReaderPointLimit = 19991;
// ...and the Philips udf reader after this many.
inline constexpr int kUdfPointLimit = 19981;

struct ScanData {
  float start = 0.0f;
  float step = 0.0f;
  std::vector<float> y;
  float wavelength = 1.5406f;                  // α1 wavelength of the slot
  WavelengthSetting wavelengths{1.5406f, 1.54433f, 0.0f};
  // Texts the format supplies; left empty (blank) when it does not.
  std::string title, date, time, diffractometer;
  std::vector<std::string> comments;           // gdf header lines
  std::optional<long> headerInteger;           // gdf header line 3
  std::vector<std::string> remarks;            // notes lines: several scans, uneven steps, ...
};

struct ReadFailure {
  std::string title;
  std::string text;
};

using ReadOutcome = std::variant<ScanData, ReadFailure>;

// The message texts of one reader.
struct ReaderTexts {
  const char* openError;
  const char* readError;
  const char* emptyError;
};

inline constexpr char kFileErrorTitle[] = "File error";   // open failure, nothing read
inline constexpr char kFileErrorTitleCaps[] = "File Error";  // a header line unreadable

}  // namespace quarvel
