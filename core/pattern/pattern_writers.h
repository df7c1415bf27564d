// Writing a store slot to a pattern file. The whole content is assembled first and the target
// replaced only once it was written completely, so a failed save never destroys the previous
// file.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "core/pattern/pattern_store.h"
#include "core/pattern/readers/scan_data.h"

namespace quarvel {

class Session;

// Format codes for saving, as the File menu uses them.
enum class SaveFormat : int { Gdf = 0, Xy = 1, Std = 2, Xyw = 3, Cif = 4 };

// The exact text of a slot written in `format`; `name` is the file name used inside the file
// (the CIF data block, the gdf header).
std::string patternFileText(const PatternStore& store, int slot, SaveFormat format, const std::string& name);

// Writes `slot` to `path`; nullopt on success, else the message to show.
std::optional<ReadFailure> writePatternFile(const PatternStore& store, int slot, SaveFormat format,
                                            const std::filesystem::path& path);

// The columns of a fitted-pattern file: 2θ, observed (slot 1), calculated (slot 4), difference,
// background (slot 2, 0 where none).
std::string fittedPatternText(const PatternStore& store);
std::optional<ReadFailure> writeFittedPatternFile(const PatternStore& store, const std::filesystem::path& path);

// Save-dialog texts of a format: filter "Pattern file (*.xy)" and extension "xy".
std::string saveFilterFor(SaveFormat format);
std::string saveExtensionFor(SaveFormat format);

}  // namespace quarvel
