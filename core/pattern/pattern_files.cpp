#include "core/pattern/pattern_files.h"

#include <array>
#include <filesystem>
#include <utility>

namespace quarvel {

std::optional<ExtensionKind> kindForExtension(std::string_view path) {
  std::string ext = std::filesystem::path(path).extension().string();
  if (ext.empty()) return std::nullopt;
  ext.erase(0, 1);
  static const std::array<std::pair<const char*, OpenFormat>, 10> kFormats = {{
      {"gdf", OpenFormat::Gdf}, {"xy", OpenFormat::Xy}, {"dat", OpenFormat::Std},
      {"udf", OpenFormat::Udf}, {"chi", OpenFormat::Chi}, {"xrdml", OpenFormat::Xrdml},
      {"x_y", OpenFormat::XYVelm}, {"txt", OpenFormat::BrukerTxt}, {"cif", OpenFormat::Cif},
      {"uxd", OpenFormat::Uxd},
  }};
  auto upper = [](std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
  };
  if (ext == "sum" || ext == "SUM") return ExtensionKind{true, OpenFormat::Xy};
  for (const auto& [lower, format] : kFormats) {
    if (ext == lower || ext == upper(lower)) return ExtensionKind{false, format};
  }
  return std::nullopt;
}

}  // namespace quarvel
