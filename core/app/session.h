// Session: the one working state of the program. A desktop holds exactly one; a test or a
// script worker thread makes its own. Nothing else in the core keeps mutable state.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "core/app/menu_model.h"
#include "core/app/settings.h"
#include "core/app/shell.h"
#include "core/fit/fit_state.h"
#include "core/index/indexing_state.h"
#include "core/pattern/pattern_store.h"
#include "core/pattern/summary_state.h"
#include "core/peaks/background_state.h"
#include "core/peaks/peak_list.h"
#include "core/process/process_settings.h"
#include "core/script/script_state.h"

namespace quarvel {

struct AppFlags {
  bool scriptRunning = false;  // operations show no dialog, keep no undo copy, do not refresh
  bool debugMode = false;
  bool w7Mode = false;
  bool xGrid = false;
  bool yGrid = false;
  bool interrupt = false;      // set by Ctrl+I, polled by long computations
};

// Texts of the "Information" dialog that are not settings-file values.
struct SampleInfo {
  std::string remarks;
};

class Session {
 public:
  // `workingDirectory` plays the role of the process's current directory: quarvel.ini,
  // scratch files and engine reports live there, and it follows the files the user opens.
  Session(Shell& shell, std::filesystem::path workingDirectory);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  Shell& shell() const { return *shell_; }
  PatternStore& store() { return *store_; }
  const PatternStore& store() const { return *store_; }
  MenuModel& menu() { return menu_; }
  const MenuModel& menu() const { return menu_; }
  Settings& settings() { return settings_; }
  const Settings& settings() const { return settings_; }

  const std::filesystem::path& workingDirectory() const { return workingDirectory_; }
  void setWorkingDirectory(std::filesystem::path folder) { workingDirectory_ = std::move(folder); }
  // A relative path taken against the working directory; absolute paths are returned as given.
  std::filesystem::path resolve(const std::filesystem::path& path) const;

  // Start-up: read quarvel.ini, clear the flags, reset the working state, rewrite quarvel.ini
  // and put the recent files into the File menu.
  void start();

  // Rewrites quarvel.ini (in the folder the program started in) with the current settings.
  void saveSettings();

  // Single-level undo.
  void keepUndoCopy();
  void undo();

  void rebuildAxisTable();
  // Ends nearly every command: greys "Save Pattern File" and "Edit Pattern" while the
  // background is shown, resets the plot's zoom and mouse mode, and repaints.
  void refreshView();
  // Enables (or greys) the menus that need a loaded pattern.
  void setPatternMenus(bool loaded);
  // Enables the Background items that need a background curve in slot 2 (scale, subtract,
  // crystallinity, save, plot), once any command has put one there.
  void setBackgroundMenus();
  // Puts every analysis setting back to its start value.
  void resetWorkingState();

  // Sets the plot mode and keeps the Plot menu's check mark on it.
  void setPlotMode(PlotMode mode);

  // After a successful load into slot 1: rebuild the axis table, enable the pattern menus,
  // update the recent-file list and quarvel.ini, follow the file's folder, refresh.
  void patternLoaded(const std::string& path);

  // Convenience wrappers around the shell.
  void message(std::string_view title, std::string_view text) const { shell_->showMessage(title, text); }
  void note(std::string_view line) const { shell_->appendNotes(line); }
  // True once Ctrl+I was pressed (or the shell's Stop button); long computations poll it.
  bool interruptRequested();

  AppFlags flags;
  SampleInfo sample;
  ProcessSettings process;
  BackgroundState background;
  PeakList peaks;
  PeakSearchOptions peakSearch;
  FitState fit;
  IndexingState indexing;
  ScriptState script;
  SummaryState summary;

 private:
  Shell* shell_;
  std::unique_ptr<PatternStore> store_;
  MenuModel menu_;
  Settings settings_;
  std::filesystem::path workingDirectory_;
  // quarvel.ini stays in the folder the program started in, however the working directory
  // follows the files the user opens.
  std::filesystem::path settingsFolder_;
};

}  // namespace quarvel
