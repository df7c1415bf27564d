#include "core/app/session.h"

#include "core/app/command_ids.h"

namespace quarvel {

namespace fs = std::filesystem;

Session::Session(Shell& shell, fs::path workingDirectory)
    : shell_(&shell),
      store_(std::make_unique<PatternStore>()),
      menu_(MenuModel::mainMenu()),
      workingDirectory_(std::move(workingDirectory)),
      settingsFolder_(workingDirectory_) {
  menu_.setListener([this](const MenuItem& item) { shell_->menuChanged(item); });
}

fs::path Session::resolve(const fs::path& path) const {
  if (path.empty() || path.is_absolute()) return path;
  return workingDirectory_ / path;
}

void Session::start() {
  settingsFolder_ = workingDirectory_;
  settings_.read(settingsFolder_, *shell_);
  flags = AppFlags();
  resetWorkingState();
  settings_.rewrite(settingsFolder_, *shell_);
  menu_.setRecentFiles(settings_.values.recentFiles);
}

void Session::saveSettings() { settings_.rewrite(settingsFolder_, *shell_); }

void Session::keepUndoCopy() { store_->keepUndoCopy(); }

void Session::undo() {
  if (!store_->restoreUndoCopy()) return;
  resetWorkingState();
  rebuildAxisTable();
  refreshView();
}

void Session::rebuildAxisTable() { store_->rebuildAxisTable(); }

void Session::refreshView() {
  const bool backgroundShown = store_->selection.plotMode == PlotMode::Background;
  menu_.setEnabled(cmd::kMenuSavePattern, !backgroundShown);
  menu_.setEnabled(cmd::kEditPattern, !backgroundShown);
  shell_->repaintPlot(true);
}

void Session::setPatternMenus(bool loaded) {
  for (int id : {cmd::kMenuPlot, cmd::kMenuModify, cmd::kMenuMultiple, cmd::kMenuBackground,
                 cmd::kMenuPeakSearch, cmd::kMenuPeakFit, cmd::kMenuIndex}) {
    menu_.setEnabled(id, loaded);
  }
}

void Session::setBackgroundMenus() {
  for (int id : {cmd::kScaleBackground, cmd::kScaleToInterval, cmd::kSubtractBackground, cmd::kCrystallinity,
                 cmd::kSaveBackground, cmd::kPlotBackground})
    menu_.setEnabled(id, true);
}

void Session::resetWorkingState() {
  Selection& sel = store_->selection;
  sel.currentSlot = kSlotPattern;
  setPlotMode(PlotMode::Pattern);
  store_->multipleCount = 0;
  store_->discardUndoCopy();
  store_->info.clear();
  indexing.resetCell();
  fit.reset();
  process.resetWorkingDefaults();
  peakSearch = PeakSearchOptions();
  flags.scriptRunning = false;
}

void Session::setPlotMode(PlotMode mode) {
  store_->selection.plotMode = mode;
  const int ids[] = {cmd::kPlotPattern, cmd::kPlotBackground, cmd::kPlotDifference,
                     cmd::kPlotCalculated, cmd::kPlotPatternBackground};
  const int chosen = ids[static_cast<int>(mode) - 1];
  for (int id : ids) menu_.setChecked(id, id == chosen);
}

void Session::patternLoaded(const std::string& path) {
  rebuildAxisTable();
  setPatternMenus(true);
  settings_.addRecentFile(path);
  settings_.rewrite(settingsFolder_, *shell_);
  menu_.setRecentFiles(settings_.values.recentFiles);
  const fs::path folder = fs::path(path).parent_path();
  if (!folder.empty()) workingDirectory_ = folder;
  refreshView();
}

bool Session::interruptRequested() {
  if (shell_->interruptRequested()) flags.interrupt = true;
  return flags.interrupt;
}

}  // namespace quarvel
