#include "core/peaks/background_commands.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include <fmt/format.h>

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/file_dialogs.h"
#include "core/app/session.h"
#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/pattern/pattern_reading.h"
#include "core/peaks/background.h"
#include "core/process/truncate.h"

namespace quarvel {
namespace {

constexpr char kTitle[] = "Background";
// Settings-file keys of the remembered Foil, Tape and Capillary files.
constexpr const char* kFileKeys[] = {"BGFOIL", "BGTAPE", "BGCAPILLARY"};

void showBackground(Session& s) {
  s.setBackgroundMenus();
  const PatternSlot& b = s.store().slot(kSlotBackground);
  s.background.intervalLow = b.start;
  s.background.intervalHigh = b.end;
  s.store().selection.currentSlot = kSlotBackground;
  s.setPlotMode(PlotMode::Background);
  s.rebuildAxisTable();
  if (!s.flags.scriptRunning) s.refreshView();
}

void showDifference(Session& s) {
  formDifference(s.store(), s.process);
  s.store().selection.currentSlot = kSlotAsLoaded;
  s.setPlotMode(PlotMode::Difference);
  if (!s.flags.scriptRunning) s.refreshView();
}

void showPatternAndBackground(Session& s) {
  s.setPlotMode(PlotMode::PatternAndBackground);
  if (!s.flags.scriptRunning) s.refreshView();
}

bool stepsDiffer(float a, float b) { return std::fabs(a - b) > 1e-5f * std::max(std::fabs(a), std::fabs(b)); }

// Foil, Tape, Capillary: the file comes from the "User defined background file" dialog, which
// opens with the name remembered in quarvel.ini.
void loadFixedBackground(Session& s, BackgroundType type) {
  const int index = static_cast<int>(type) - 1;
  auto& extra = s.settings().values.extra;
  std::string remembered = s.background.files[static_cast<std::size_t>(index)];
  if (remembered.empty() && extra.count(kFileKeys[index])) remembered = extra[kFileKeys[index]];
  DialogModel dialog("User defined background file", 147, 63);
  dialog.edit("file", "", remembered)
      .browse("file", FileRequest{"Open Background Pattern File", {"Open pattern file (*.gdf)"}, "gdf", false})
      .okCancel();
  if (s.shell().runDialog(dialog) == DialogModel::kCancel) return;
  const std::string path = trim(dialog.text("file"));
  if (path.empty()) return;
  s.background.files[static_cast<std::size_t>(index)] = path;
  extra[kFileKeys[index]] = path;
  s.saveSettings();
  loadBackground(s, type, OpenFormat::Gdf, path);
}

void loadUserBackground(Session& s, OpenFormat format) {
  s.store().selection.fileFormatCode = static_cast<int>(format);
  FileRequest request{"Open Background Pattern File", {openFilterFor(format)}, openExtensionFor(format), false};
  if (auto path = chooseFileToOpen(s, request)) loadBackground(s, BackgroundType::UserDefined, format, *path);
}

void loadRefinedBackground(Session& s) {
  const FitState& fit = s.fit;
  if (!fit.hasRefinedBackground || fit.backgroundTerms < 1) {
    s.message(kTitle, "No refined background: fit the peaks first");
    return;
  }
  s.background.type = BackgroundType::Refined;
  PatternStore& store = s.store();
  const PatternSlot& p = store.pattern();
  PatternSlot& b = store.slot(kSlotBackground);
  b.copyFrom(p);
  // Chebyshev polynomials of the fitted range mapped onto [-1, 1].
  for (int i = 0; i < p.count; ++i) {
    const double x = p.x(i);
    double value = 0.0;
    if (x >= fit.fitMin && x <= fit.fitMax && fit.fitMax > fit.fitMin) {
      const double t = 2.0 * (x - fit.fitMin) / (fit.fitMax - fit.fitMin) - 1.0;
      double previous = 1.0, current = t;
      for (int k = 0; k < fit.backgroundTerms; ++k) {
        const double tk = k == 0 ? 1.0 : k == 1 ? t : 2.0 * t * current - previous;
        if (k >= 2) {
          previous = current;
          current = tk;
        }
        value += fit.backgroundCoeff[static_cast<std::size_t>(k)] * tk;
      }
    }
    b.y[static_cast<std::size_t>(i)] = static_cast<float>(value);
  }
  store.slot(kSlotAsLoaded).copyFrom(p);
  showBackground(s);
}

void scaleBackgroundCommand(Session& s) {
  s.keepUndoCopy();
  // First touch the pattern from below; this scaling stays even if the dialog is cancelled.
  const double ratio = smallestRatio(s.store(), s.process);
  if (ratio < 1.0e30) scaleBackground(s.store(), ratio);
  showPatternAndBackground(s);
  DialogModel dialog("Scale background", 108, 81);
  dialog.edit("factor", "Scale factor on background", s.background.scaleFactor).okCancel();
  if (s.shell().runDialog(dialog) == DialogModel::kCancel) return;
  const double factor = dialog.number("factor", 0.0);
  if (factor <= 0.0) return;
  s.background.scaleFactor = factor;
  scaleBackground(s.store(), factor);
  showDifference(s);
}

void scaleToIntervalCommand(Session& s) {
  s.keepUndoCopy();
  const BackgroundSums sums = backgroundSums(s.store(), s.process);
  if (sums.background != 0.0) scaleBackground(s.store(), sums.pattern / sums.background);
  showPatternAndBackground(s);
  DialogModel dialog("Scale background to interval", 108, 98);
  dialog.edit("low", "Scale interval", s.background.intervalLow)
      .edit("high", "  -", s.background.intervalHigh)
      .radio("average", "", {"Simple Average", "Weighted Average"}, s.background.weightedAverage ? 1 : 0)
      .okCancel();
  if (s.shell().runDialog(dialog) == DialogModel::kCancel) return;
  s.background.intervalLow = static_cast<float>(dialog.number("low", s.background.intervalLow));
  s.background.intervalHigh = static_cast<float>(dialog.number("high", s.background.intervalHigh));
  s.background.weightedAverage = dialog.selected("average") == 1;
  scaleBackground(s.store(), intervalFactor(s.store(), s.process, s.background.intervalLow, s.background.intervalHigh,
                                            s.background.weightedAverage));
  showDifference(s);
}

void crystallinityCommand(Session& s) {
  const double c = crystallinity(s.store(), s.process);
  s.note("Crystallinity: " + trim(formatF(c, 12, 2)));
  s.message("Crystallinity", "Crystallinity =" + formatF(c, 8, 2) + " %");
}

void saveBackgroundCommand(Session& s) {
  FileRequest request{"Save Background", {"Save file (*.xy)"}, "bxy", true};
  auto path = chooseFileToSave(s, request);
  if (!path) return;
  const PatternSlot& p = s.store().pattern();
  const PatternSlot& b = s.store().slot(kSlotBackground);
  std::string text;
  for (int i = 0; i < b.count; ++i) {
    const int j = p.step != 0.0f ? static_cast<int>(std::lround((b.x(i) - p.start) / p.step)) : i;
    const double y = j >= 0 && j < p.count ? p.y[static_cast<std::size_t>(j)] : 0.0;
    text += fmt::format("{:10.4f} {:14.3f} {:14.3f}\n", b.x(i), y, b.y[static_cast<std::size_t>(i)]);
  }
  if (!writeFileAtomically(*path, text)) s.message("File error", "Error opening output file");
}

void autoSubtractOptions(Session& s) {
  DialogModel dialog("Auto subtract options", 150, 80);
  dialog.edit("window", "Smoothing factor (points)", static_cast<double>(s.background.autoSmoothingFactor))
      .edit("scale", "Scale factor", s.background.autoScale)
      .okCancel();
  if (s.shell().runDialog(dialog) == DialogModel::kCancel) return;
  s.background.autoSmoothingFactor = static_cast<int>(nint(dialog.number("window", s.background.autoSmoothingFactor)));
  const double scale = dialog.number("scale", s.background.autoScale);
  if (scale > 0.0) s.background.autoScale = scale;
}

}  // namespace

bool loadBackground(Session& s, BackgroundType type, OpenFormat format, const std::string& path) {
  s.background.type = type;
  if (!readPatternFile(s, format, kSlotBackground, path)) return false;
  PatternStore& store = s.store();
  const PatternSlot& p = store.pattern();
  const PatternSlot& b = store.slot(kSlotBackground);
  if (stepsDiffer(p.step, b.step)) {
    s.message(kTitle, "Incompatible step sizes");
    return false;
  }
  truncateSlots(store, std::max(p.start, b.start), std::min(p.end, b.end));
  showBackground(s);
  return true;
}

bool subtractBackground(Session& s) {
  const double share = backgroundShare(backgroundSums(s.store(), s.process));
  showPatternAndBackground(s);
  bool yes = true;
  if (!s.flags.scriptRunning)
    yes = s.shell().askYesNo("Background Subtraction", "Background =" + formatF(share, 8, 2) + " %. Subtract?");
  if (yes) {
    if (!s.flags.scriptRunning) s.keepUndoCopy();
    showDifference(s);
  } else {
    s.store().selection.currentSlot = kSlotPattern;
    s.setPlotMode(PlotMode::Pattern);
  }
  for (int id : {cmd::kCrystallinity, cmd::kSaveBackground, cmd::kPlotBackground}) s.menu().setEnabled(id, true);
  if (!s.flags.scriptRunning) s.refreshView();
  return yes;
}

bool autoSubtractBackground(Session& s, int window) {
  PatternStore& store = s.store();
  const PatternSlot& p = store.pattern();
  auto estimate = estimateBackground(p.data(), window);
  if (estimate.empty()) return false;
  PatternSlot& b = store.slot(kSlotBackground);
  b.copyFrom(p);
  const double scale = s.background.autoScale;
  for (std::size_t i = 0; i < estimate.size(); ++i) b.y[i] = static_cast<float>(estimate[i] * scale);
  s.background.type = BackgroundType::None;
  s.setBackgroundMenus();
  showPatternAndBackground(s);
  bool yes = true;
  if (!s.flags.scriptRunning)
    yes = s.shell().askYesNo("Background subtraction", "scale =" + formatF(scale, 8, 3) + ". Subtract now?");
  if (!yes) return false;
  if (!s.flags.scriptRunning) s.keepUndoCopy();
  showDifference(s);
  return true;
}

void registerBackgroundCommands(CommandDispatcher& d) {
  d.on(cmd::kBackgroundFoil, [](Session& s) { loadFixedBackground(s, BackgroundType::Foil); });
  d.on(cmd::kBackgroundTape, [](Session& s) { loadFixedBackground(s, BackgroundType::Tape); });
  d.on(cmd::kBackgroundCapillary, [](Session& s) { loadFixedBackground(s, BackgroundType::Capillary); });
  d.on(cmd::kBackgroundUserGdf, [](Session& s) { loadUserBackground(s, OpenFormat::Gdf); });
  d.on(cmd::kBackgroundUserXy, [](Session& s) { loadUserBackground(s, OpenFormat::Xy); });
  d.on(cmd::kBackgroundUserStd, [](Session& s) { loadUserBackground(s, OpenFormat::Std); });
  d.on(cmd::kBackgroundUserUdf, [](Session& s) { loadUserBackground(s, OpenFormat::Udf); });
  d.on(cmd::kBackgroundUserXrdml, [](Session& s) { loadUserBackground(s, OpenFormat::Xrdml); });
  d.on(cmd::kBackgroundRefined, loadRefinedBackground);
  d.on(cmd::kScaleBackground, scaleBackgroundCommand);
  d.on(cmd::kScaleToInterval, scaleToIntervalCommand);
  d.on(cmd::kSubtractBackground, [](Session& s) { subtractBackground(s); });
  d.on(cmd::kCrystallinity, crystallinityCommand);
  d.on(cmd::kSaveBackground, saveBackgroundCommand);
  d.on(cmd::kAutoSubtract, [](Session& s) { autoSubtractBackground(s, s.background.autoSmoothingFactor); });
  d.on(cmd::kAutoSubtractOptions, autoSubtractOptions);
}

}  // namespace quarvel
