#include "core/peaks/peak_commands.h"

#include <cmath>
#include <filesystem>

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/file_dialogs.h"
#include "core/app/session.h"
#include "core/common/external_program.h"
#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/peaks/peak_files.h"
#include "core/peaks/peak_search.h"

namespace quarvel {
namespace {

constexpr int kSearchButton = 2;
constexpr int kAddButton = 2;

void searchOptions(Session& s) {
  PeakSearchOptions& o = s.peakSearch;
  DialogModel dialog("Peak search options", 140, 139);
  const std::string group = "2nd derivative";
  dialog.edit("smoothing", "Smoothing factor", static_cast<double>(o.smoothingFactor), group)
      .edit("minFwhm", "Min FWHM", o.minFwhm, group)
      .edit("maxFwhm", "Max FWHM", o.maxFwhm, group)
      .edit("sigma", "Sigma factor", o.sigmaFactor, group)
      .button("OK", DialogModel::kOk)
      .button("Search", kSearchButton)
      .button("Cancel", DialogModel::kCancel);
  const int answer = s.shell().runDialog(dialog);
  if (answer == DialogModel::kCancel) return;
  o.smoothingFactor = static_cast<int>(nint(dialog.number("smoothing", o.smoothingFactor)));
  o.minFwhm = static_cast<float>(dialog.number("minFwhm", o.minFwhm));
  o.maxFwhm = static_cast<float>(dialog.number("maxFwhm", o.maxFwhm));
  o.sigmaFactor = static_cast<float>(dialog.number("sigma", o.sigmaFactor));
  if (answer == kSearchButton) runPeakSearch(s);
}

void addPeaksAt(Session& s, const std::vector<double>& positions) {
  const PatternSlot& p = s.store().pattern();
  for (double x : positions) {
    if (s.peaks.size() >= kMaxPeaks) return;
    const int i = nearestMaximum(p.start, p.step, p.data(), static_cast<float>(x));
    if (i < 0) return;
    Peak peak;
    peak.position = p.x(i);
    peak.intensity = p.y[static_cast<std::size_t>(i)];
    s.peaks.peaks.push_back(peak);
  }
}

// The user marks positions in the plot; "Add" puts them into the list and keeps the dialog
// open, OK adds the last marks and closes, Cancel drops what this dialog added.
void manualSearch(Session& s) {
  const auto before = s.peaks.peaks;
  for (;;) {
    DialogModel dialog("Manual Peak Search", 120, 43);
    dialog.plotPick("marks", "Click the peaks in the plot")
        .button("Add", kAddButton)
        .button("OK", DialogModel::kOk)
        .button("Cancel", DialogModel::kCancel);
    const int answer = s.shell().runDialog(dialog);
    if (answer == DialogModel::kCancel) {
      s.peaks.peaks = before;
      break;
    }
    addPeaksAt(s, dialog.picked("marks"));
    s.refreshView();
    if (answer != kAddButton) break;
  }
  s.refreshView();
}

std::vector<std::string> peakReport(const Session& s) {
  std::vector<std::string> lines{"   No.     2theta       Intensity       d-value"};
  const float lambda = s.store().wavelength.alpha1;
  int number = 0;
  for (const Peak& p : s.peaks.peaks) {
    const double d = lambda / (2.0 * std::sin(p.position * 3.14159265358979323846 / 360.0));
    lines.push_back(formatI(++number, 6) + formatF(p.position, 11, 4) + formatF(p.intensity, 16, 2) + formatF(d, 14, 5));
  }
  return lines;
}

void savePeaks(Session& s) {
  if (s.peaks.empty()) {
    s.message("Error", "No peaks in list");
    return;
  }
  auto path = chooseFileToSave(s, FileRequest{"Save Peak positions", {"Peak File (*.pks)"}, "pks", true});
  if (!path) return;
  if (!writeFileAtomically(*path, peakFileText(s.peaks.peaks, s.store().pattern())))
    s.message("File error", "Error opening output file");
}

void loadPeaks(Session& s) {
  auto path = chooseFileToOpen(s, FileRequest{"Open Peak File", {"Peak File (*.pks)"}, "pks", false});
  if (!path) return;
  const auto text = readWholeFile(*path);
  if (!text) {
    s.message("File error", "Error opening peak info file");
    return;
  }
  auto read = parsePeakFile(*text, std::filesystem::path(*path).filename().string());
  if (!read.error.empty()) {
    s.message("File error", read.error);
    return;
  }
  s.peaks.peaks = std::move(read.peaks);
  s.refreshView();
}

void editPeaks(Session& s) {
  auto path = chooseFileToOpen(s, FileRequest{"Open Peak File", {"Peak File (*.pks)"}, "pks", false});
  if (!path) return;
  if (!startExternalProgram(s.settings().values.editor, *path)) s.shell().openTextViewer(*path);
}

}  // namespace

void runPeakSearch(Session& s) {
  const PatternSlot& p = s.store().pattern();
  searchPeaks(p.start, p.step, p.data(), s.peakSearch, s.peaks.peaks);
  if (!s.flags.scriptRunning) {
    s.note("Peak search: " + std::to_string(s.peaks.size()) + " peaks found");
    s.refreshView();
  }
}

void registerPeakCommands(CommandDispatcher& d) {
  d.on(cmd::kPeakSearch, runPeakSearch);
  d.on(cmd::kPeakSearchOptions, searchOptions);
  d.on(cmd::kManualSearch, manualSearch);
  d.on(cmd::kPrintPeaks, [](Session& s) { s.shell().printReport("Peak list", peakReport(s)); });
  d.on(cmd::kSavePeaks, savePeaks);
  d.on(cmd::kLoadPeaks, loadPeaks);
  d.on(cmd::kEditPeaks, editPeaks);
  d.on(cmd::kClearPeaks, [](Session& s) {
    s.peaks.clear();
    s.refreshView();
  });
}

}  // namespace quarvel
