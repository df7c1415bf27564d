// Opening pattern files by format code or by extension: the entry points the File menu, the
// recent-file commands and scripts share.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quarvel {

class Session;

// Format codes for opening, as the File menu and the recent-file list use them.
enum class OpenFormat : int {
  Gdf = 0, Xy = 1, Std = 2, Udf = 3, Chi = 4, Xrdml = 5, XYVelm = 6, BrukerTxt = 7, Cif = 8, Uxd = 9,
};

// What a remembered path opens as, judged by its extension written all in lower or all in upper
// case ("xy" or "XY"; "Xy" is not recognised). "sum" means a summary file.
struct ExtensionKind {
  bool summary = false;
  OpenFormat format = OpenFormat::Xy;
};
std::optional<ExtensionKind> kindForExtension(std::string_view path);

// Loads `path` into slot 1 with the reader of `format` and runs the steps around a load (reset,
// axis table, menus, recent files, working directory, refresh). Returns true on success; the
// reader reports failures itself.
bool openPatternFile(Session& session, OpenFormat format, const std::string& path);


}  // namespace quarvel
