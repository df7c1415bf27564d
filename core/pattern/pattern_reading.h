// Loading a pattern file into a store slot: the file is read whole, parsed by the reader of its
// format, and the scan is put into the slot with the steps every reader shares (slot zeroed
// first, count and grid set, slot 1 copied to slot 3, pattern texts and wavelengths set).
#pragma once

#include <string>

#include "core/pattern/pattern_files.h"
#include "core/pattern/readers/scan_data.h"

namespace quarvel {

class Session;

// Returns true on success; on failure the reader's message was shown and the slot holds no
// points. Remarks about the file (several scans, uneven steps) go to the notes.
bool readPatternFile(Session& session, OpenFormat format, int slot, const std::string& path);

// Puts a parsed scan into `slot` (which is zeroed first) with the rules of a load into it.
void storeScan(Session& session, int slot, const ScanData& scan, const std::string& path);

// The open-dialog texts of a format: filter "Open pattern file (*.xy)" and extension "xy".
std::string openFilterFor(OpenFormat format);
std::string openExtensionFor(OpenFormat format);

}  // namespace quarvel
