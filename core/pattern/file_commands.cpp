// The File-menu commands that open and save patterns and work with the summary file.
#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/file_dialogs.h"
#include "core/app/session.h"
#include "core/pattern/pattern_files.h"
#include "core/pattern/pattern_reading.h"
#include "core/pattern/pattern_writers.h"
#include "core/pattern/summary_file.h"

namespace quarvel {
namespace {

void openWithDialog(Session& s, OpenFormat format) {
  s.store().selection.fileFormatCode = static_cast<int>(format);
  FileRequest request{"Open Pattern File", {openFilterFor(format)}, openExtensionFor(format), false};
  if (auto path = chooseFileToOpen(s, request)) openPatternFile(s, format, *path);
}

void saveWithDialog(Session& s, SaveFormat format) {
  s.store().selection.fileFormatCode = static_cast<int>(format);
  FileRequest request{"Save Pattern File As", {saveFilterFor(format)}, saveExtensionFor(format), true};
  auto path = chooseFileToSave(s, request);
  if (!path) return;
  s.shell().progress(0.0, "Save file starting");
  const int slot = s.store().selection.currentSlot;
  if (auto failure = writePatternFile(s.store(), slot, format, s.resolve(*path))) {
    s.shell().progress(1.0, "");
    s.message(failure->title, failure->text);
    return;
  }
  s.store().info.savedPath = *path;
  s.shell().progress(1.0, "Save file ended");
}

void saveFittedPattern(Session& s) {
  if (s.store().slot(kSlotCalculated).count == 0) {
    s.message("Save fitted pattern", "No fitted pattern: fit the peaks first");
    return;
  }
  FileRequest request{"Save Fitted Pattern As", {"Fitted Pattern File (*.xy)"}, "xy", true};
  auto path = chooseFileToSave(s, request);
  if (!path) return;
  if (auto failure = writeFittedPatternFile(s.store(), s.resolve(*path))) s.message(failure->title, failure->text);
}

void openSummaryWithDialog(Session& s) {
  FileRequest request{"Open Summary File", {"Summary file (*.sum)"}, "sum", false};
  // An absent file is created, so the choice is checked like a file to save.
  request.save = true;
  if (auto path = chooseFileToSave(s, request)) openSummaryFile(s, *path);
  else s.summary.path.clear();
}

}  // namespace

bool openPatternFile(Session& session, OpenFormat format, const std::string& path) {
  session.resetWorkingState();
  session.fit = FitState{};
  if (!readPatternFile(session, format, kSlotPattern, path)) {
    session.setPatternMenus(false);
    session.refreshView();
    return false;
  }
  session.patternLoaded(path);
  return true;
}

void registerFileCommands(CommandDispatcher& d) {
  const std::pair<int, OpenFormat> opens[] = {
      {cmd::kOpenGdf, OpenFormat::Gdf},     {cmd::kOpenBrukerTxt, OpenFormat::BrukerTxt},
      {cmd::kOpenUxd, OpenFormat::Uxd},     {cmd::kOpenUdf, OpenFormat::Udf},
      {cmd::kOpenXrdml, OpenFormat::Xrdml}, {cmd::kOpenXy, OpenFormat::Xy},
      {cmd::kOpenStd, OpenFormat::Std},     {cmd::kOpenChi, OpenFormat::Chi},
      {cmd::kOpenXY_Velm, OpenFormat::XYVelm}, {cmd::kOpenCif, OpenFormat::Cif},
  };
  for (const auto& entry : opens) d.on(entry.first, [format = entry.second](Session& s) { openWithDialog(s, format); });
  const std::pair<int, SaveFormat> saves[] = {
      {cmd::kSaveGdf, SaveFormat::Gdf}, {cmd::kSaveXy, SaveFormat::Xy}, {cmd::kSaveXyw, SaveFormat::Xyw},
      {cmd::kSaveStd, SaveFormat::Std}, {cmd::kSaveCif, SaveFormat::Cif},
  };
  for (const auto& entry : saves) d.on(entry.first, [format = entry.second](Session& s) { saveWithDialog(s, format); });
  d.on(cmd::kSaveFittedPattern, saveFittedPattern);
  d.on(cmd::kOpenSumFile, openSummaryWithDialog);
  d.on(cmd::kAddToSumFile, [](Session& s) { addToSummaryFile(s); });
  d.on(cmd::kEditSumFile, editSummaryFile);
  d.on(cmd::kCloseSumFile, closeSummaryFile);
}

}  // namespace quarvel
