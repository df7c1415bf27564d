#include "cli/pattern_commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <ostream>

#include <fmt/format.h>

#include "cli/console_shell.h"
#include "core/app/session.h"
#include "core/common/numbers.h"
#include "core/pattern/pattern_reading.h"

namespace quarvel {
namespace fs = std::filesystem;
namespace {

std::string extensionOf(const std::string& path) {
  std::string ext = fs::path(path).extension().string();
  return ext.empty() ? ext : ext.substr(1);
}

// The reader for `path`: the --from name when given, else the extension.
std::optional<OpenFormat> chooseReader(const std::string& path, const std::string& from, std::ostream& err) {
  auto format = openFormatNamed(from.empty() ? extensionOf(path) : from);
  if (!format) err << "File Error: Unrecognized extension (use --from gdf|xy|dat|udf|chi|xrdml|x_y|txt|cif|uxd)\n";
  return format;
}

}  // namespace

std::optional<OpenFormat> openFormatNamed(std::string name) {
  name = toLower(name);
  if (name == "std") name = "dat";
  if (name == "xye") name = "xy";
  for (int code = 0; code <= 9; ++code)
    if (openExtensionFor(static_cast<OpenFormat>(code)) == name) return static_cast<OpenFormat>(code);
  return std::nullopt;
}

std::optional<SaveFormat> saveFormatNamed(std::string name) {
  name = toLower(name);
  if (name == "std") name = "dat";
  for (int code = 0; code <= 4; ++code)
    if (saveExtensionFor(static_cast<SaveFormat>(code)) == name) return static_cast<SaveFormat>(code);
  return std::nullopt;
}

std::string formatName(OpenFormat format) {
  static constexpr const char* kNames[] = {"gdf (Huber)", "xy (general)", "std (general)", "udf (Philips)",
                                           "chi (Ostra)", "xrdml (Philips)", "x_y (Velm)", "txt (Bruker)",
                                           "CIF powder", "uxd (Bruker)"};
  return kNames[static_cast<int>(format)];
}

int runInfo(const std::string& path, const std::string& from, std::ostream& out, std::ostream& err) {
  const auto format = chooseReader(path, from, err);
  if (!format) return 1;
  ConsoleShell shell(out, err);
  Session session(shell, fs::current_path());
  if (!readPatternFile(session, *format, kSlotPattern, path)) return 1;
  const PatternSlot& s = session.store().pattern();
  const WavelengthSetting& w = session.store().wavelength;
  const auto [lo, hi] = std::minmax_element(s.y.begin(), s.y.begin() + s.count);
  out << fmt::format("file        {}\n", path) << fmt::format("format      {}\n", formatName(*format))
      << fmt::format("start       {:.5f}\n", s.start) << fmt::format("step        {:.6f}\n", s.step)
      << fmt::format("end         {:.5f}\n", s.end) << fmt::format("count       {}\n", s.count)
      << fmt::format("wavelength  {:.5f}  (alpha1 {:.5f}, alpha2 {:.5f}, ratio {:.3f})\n", s.wavelength, w.alpha1,
                     w.alpha2, w.ratio)
      << fmt::format("intensity   min {:.2f}  max {:.2f}\n", *lo, *hi);
  const PatternInfo& info = session.store().info;
  if (!info.title.empty()) out << "title       " << info.title << "\n";
  if (!info.date.empty()) out << "date        " << info.date << "\n";
  if (!info.diffractometer.empty()) out << "instrument  " << info.diffractometer << "\n";
  return 0;
}

int runConvert(const std::string& in, const std::string& outPath, const std::string& from, const std::string& to,
               std::ostream& out, std::ostream& err) {
  const auto reader = chooseReader(in, from, err);
  if (!reader) return 1;
  const auto writer = saveFormatNamed(to.empty() ? extensionOf(outPath) : to);
  if (!writer) {
    err << "File Error: Unrecognized extension (use --to gdf|xy|xyw|dat|cif)\n";
    return 1;
  }
  ConsoleShell shell(out, err);
  Session session(shell, fs::current_path());
  if (!readPatternFile(session, *reader, kSlotPattern, in)) return 1;
  if (auto failure = writePatternFile(session.store(), kSlotPattern, *writer, outPath)) {
    shell.showMessage(failure->title, failure->text);
    return 1;
  }
  return 0;
}

void addPatternCommands(CLI::App& app, std::ostream& out, std::ostream& err, int& exitCode) {
  auto* info = app.add_subcommand("info", "Show the format, 2theta grid, wavelengths and intensity range of a pattern file");
  auto infoFile = std::make_shared<std::string>();
  auto infoFrom = std::make_shared<std::string>();
  info->add_option("FILE", *infoFile, "pattern file")->required();
  info->add_option("--from", *infoFrom, "format (default: by extension)");
  info->callback([=, &out, &err, &exitCode] { exitCode = runInfo(*infoFile, *infoFrom, out, err); });

  auto* convert = app.add_subcommand("convert", "Convert a pattern file to another format (gdf, xy, xyw, dat, cif)");
  auto in = std::make_shared<std::string>(), outFile = std::make_shared<std::string>();
  auto from = std::make_shared<std::string>(), to = std::make_shared<std::string>();
  convert->add_option("IN", *in, "pattern file to read")->required();
  convert->add_option("OUT", *outFile, "pattern file to write")->required();
  convert->add_option("--from", *from, "input format (default: by extension)");
  convert->add_option("--to", *to, "output format (default: by extension)");
  convert->callback([=, &out, &err, &exitCode] { exitCode = runConvert(*in, *outFile, *from, *to, out, err); });
}

}  // namespace quarvel
