#include "cli/peaks_commands.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <ostream>

#include <fmt/format.h>

#include "cli/console_shell.h"
#include "cli/pattern_commands.h"
#include "core/app/session.h"
#include "core/common/text_file.h"
#include "core/pattern/pattern_reading.h"
#include "core/peaks/background.h"
#include "core/peaks/peak_files.h"
#include "core/peaks/peak_search.h"

namespace quarvel {
namespace fs = std::filesystem;
namespace {

bool loadInto(Session& session, const std::string& file, const std::string& from, std::ostream& err) {
  std::string name = from;
  if (name.empty()) {
    name = fs::path(file).extension().string();
    if (!name.empty()) name.erase(0, 1);
  }
  const auto format = openFormatNamed(name);
  if (!format) {
    err << "File Error: Unrecognized extension (use --from)\n";
    return false;
  }
  return readPatternFile(session, *format, kSlotPattern, file);
}

}  // namespace

int runPeaks(const PeaksRequest& r, std::ostream& out, std::ostream& err) {
  ConsoleShell shell(out, err);
  Session session(shell, fs::current_path());
  if (!loadInto(session, r.file, r.from, err)) return 1;
  const PatternSlot& p = session.store().pattern();
  std::vector<Peak> peaks;
  searchPeaks(p.start, p.step, p.data(), r.options, peaks);
  if (!r.output.empty()) {
    if (peaks.empty()) {
      err << "Error: No peaks in list\n";
      return 1;
    }
    if (!writeFileAtomically(r.output, peakFileText(peaks, p))) {
      err << "File error: Error opening output file\n";
      return 1;
    }
    out << peaks.size() << " peaks written to " << r.output << "\n";
    return 0;
  }
  out << "   No.     2theta       Intensity\n";
  int n = 0;
  for (const Peak& peak : peaks) out << fmt::format("{:6d}{:11.4f}{:16.2f}\n", ++n, peak.position, peak.intensity);
  return 0;
}

int runBackground(const BackgroundRequest& r, std::ostream& out, std::ostream& err) {
  ConsoleShell shell(out, err);
  Session session(shell, fs::current_path());
  if (!loadInto(session, r.file, r.from, err)) return 1;
  const PatternSlot& p = session.store().pattern();
  const auto background = estimateBackground(p.data(), r.window);
  if (background.empty()) {
    err << "Background: the smoothing factor must be above 2\n";
    return 1;
  }
  std::string text = "#   2theta        pattern     background     difference\n";
  for (int i = 0; i < p.count; ++i) {
    const auto k = static_cast<std::size_t>(i);
    text += fmt::format("{:10.4f} {:14.3f} {:14.3f} {:14.3f}\n", p.x(i), p.y[k], background[k], p.y[k] - background[k]);
  }
  if (!writeFileAtomically(r.output, text)) {
    err << "File error: Error opening output file\n";
    return 1;
  }
  return 0;
}

void addPeaksCommands(CLI::App& app, std::ostream& out, std::ostream& err, int& exitCode) {
  auto peaks = std::make_shared<PeaksRequest>();
  auto* search = app.add_subcommand("peaks", "Search the peaks of a pattern (second-difference search)");
  search->add_option("FILE", peaks->file, "pattern file")->required();
  search->add_option("--from", peaks->from, "input format (default: by extension)");
  search->add_option("--smooth", peaks->options.smoothingFactor, "smoothing factor, points")->capture_default_str();
  search->add_option("--min-fwhm", peaks->options.minFwhm, "smallest FWHM, degrees 2theta")->capture_default_str();
  search->add_option("--max-fwhm", peaks->options.maxFwhm, "largest FWHM, degrees 2theta")->capture_default_str();
  search->add_option("--sigma", peaks->options.sigmaFactor, "significance, in noise units")->capture_default_str();
  search->add_option("-o,--output", peaks->output, "write the list to this .pks file instead of printing it");
  search->callback([peaks, &out, &err, &exitCode] { exitCode = runPeaks(*peaks, out, err); });

  auto bg = std::make_shared<BackgroundRequest>();
  auto* background = app.add_subcommand("background", "Write the automatic background and the difference of a pattern");
  background->add_option("FILE", bg->file, "pattern file")->required();
  background->add_option("--from", bg->from, "input format (default: by extension)");
  background->add_option("--smooth", bg->window, "window of the background estimate, points")->capture_default_str();
  background->add_option("-o,--output", bg->output, "output file: 2theta, pattern, background, difference")->required();
  background->callback([bg, &out, &err, &exitCode] { exitCode = runBackground(*bg, out, err); });
}

}  // namespace quarvel
