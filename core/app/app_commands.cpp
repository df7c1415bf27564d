// Commands owned by the application shell: the Settings, Plot and Window menus, Undo, the
// recent-file entries, the interrupt key, and the commands that act on the windows.
#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/messages.h"
#include "core/app/session.h"
#include "core/pattern/pattern_files.h"
#include "core/pattern/summary_file.h"

namespace quarvel {
namespace {

void toggle(Session& s, bool& flag, int id) {
  flag = !flag;
  s.menu().setChecked(id, flag);
  s.shell().repaintPlot(false);
}

void setXAxis(Session& s, XAxisUnit unit, int id) {
  s.store().selection.xAxisUnit = unit;
  s.menu().checkOneOf({cmd::kAxisTwoTheta, cmd::kAxisD, cmd::kAxisQ}, id);
  s.refreshView();
}

void setYAxis(Session& s, YAxisScale scale, int id) {
  s.store().selection.yAxisScale = scale;
  s.menu().checkOneOf({cmd::kScaleLinear, cmd::kScaleLog}, id);
  s.refreshView();
}

void showPlot(Session& s, PlotMode mode) {
  s.setPlotMode(mode);
  s.refreshView();
}

void editWavelength(Session& s) {
  WavelengthSetting& w = s.store().wavelength;
  DialogModel dialog("Wavelength(s)", 140, 90);
  dialog.edit("alpha1", "Alpha 1", w.alpha1)
      .edit("alpha2", "Alpha 2", w.alpha2)
      .edit("ratio", "Ratio", w.ratio)
      .okCancel();
  if (s.shell().runDialog(dialog) == DialogModel::kCancel) return;
  w.alpha1 = static_cast<float>(dialog.number("alpha1", w.alpha1));
  w.alpha2 = static_cast<float>(dialog.number("alpha2", w.alpha2));
  w.ratio = static_cast<float>(dialog.number("ratio", w.ratio));
  // The slot wavelength is the α1 wavelength; the cached axes depend on it.
  for (int slot : {kSlotPattern, kSlotAsLoaded}) s.store().slot(slot).wavelength = w.alpha1;
  s.rebuildAxisTable();
  s.refreshView();
}

void editInformation(Session& s) {
  SettingsValues& v = s.settings().values;
  PatternInfo& info = s.store().info;
  DialogModel dialog("Information", 220, 150);
  dialog.edit("sample", "Sample", info.title)
      .edit("department", "Department", v.department)
      .edit("company", "Company", v.company)
      .edit("address", "Address", v.address)
      .edit("diffractometer", "Diffractometer", info.diffractometer)
      .edit("remarks", "Remarks", s.sample.remarks)
      .okCancel();
  if (s.shell().runDialog(dialog) == DialogModel::kCancel) return;
  info.title = dialog.text("sample");
  v.department = dialog.text("department");
  v.company = dialog.text("company");
  v.address = dialog.text("address");
  info.diffractometer = dialog.text("diffractometer");
  s.sample.remarks = dialog.text("remarks");
}

void openRecentFile(Session& s, int number) {
  const auto& recent = s.settings().values.recentFiles;
  if (number < 1 || static_cast<std::size_t>(number) > recent.size()) return;
  const std::string path = recent[static_cast<std::size_t>(number - 1)];
  auto kind = kindForExtension(path);
  if (!kind) {
    s.message(msg::kFileError, msg::kUnrecognizedExtension);
    return;
  }
  if (kind->summary) {
    openSummaryFile(s, path);
  } else {
    openPatternFile(s, kind->format, path);
  }
}

}  // namespace

void registerAppCommands(CommandDispatcher& d) {
  d.on(cmd::kXGrid, [](Session& s) { toggle(s, s.flags.xGrid, cmd::kXGrid); });
  d.on(cmd::kYGrid, [](Session& s) { toggle(s, s.flags.yGrid, cmd::kYGrid); });
  d.on(cmd::kDebugMode, [](Session& s) { toggle(s, s.flags.debugMode, cmd::kDebugMode); });
  d.on(cmd::kW7Mode, [](Session& s) { toggle(s, s.flags.w7Mode, cmd::kW7Mode); });
  d.on(cmd::kAxisTwoTheta, [](Session& s) { setXAxis(s, XAxisUnit::TwoTheta, cmd::kAxisTwoTheta); });
  d.on(cmd::kAxisD, [](Session& s) { setXAxis(s, XAxisUnit::D, cmd::kAxisD); });
  d.on(cmd::kAxisQ, [](Session& s) { setXAxis(s, XAxisUnit::Q, cmd::kAxisQ); });
  d.on(cmd::kScaleLinear, [](Session& s) { setYAxis(s, YAxisScale::Linear, cmd::kScaleLinear); });
  d.on(cmd::kScaleLog, [](Session& s) { setYAxis(s, YAxisScale::Logarithmic, cmd::kScaleLog); });
  d.on(cmd::kWavelength, editWavelength);
  d.on(cmd::kInfo, editInformation);

  d.on(cmd::kFullPattern, [](Session& s) { s.refreshView(); });
  d.on(cmd::kPlotPattern, [](Session& s) { showPlot(s, PlotMode::Pattern); });
  d.on(cmd::kPlotBackground, [](Session& s) { showPlot(s, PlotMode::Background); });
  d.on(cmd::kPlotDifference, [](Session& s) { showPlot(s, PlotMode::Difference); });
  d.on(cmd::kPlotCalculated, [](Session& s) { showPlot(s, PlotMode::Calculated); });
  d.on(cmd::kPlotPatternBackground, [](Session& s) { showPlot(s, PlotMode::PatternAndBackground); });

  d.on(cmd::kUndo, [](Session& s) { s.undo(); });
  d.on(cmd::kInterrupt, [](Session& s) { s.flags.interrupt = true; });
  for (int n = 1; n <= 4; ++n) {
    d.on(cmd::kRecentFile1 + n - 1, [n](Session& s) { openRecentFile(s, n); });
  }

  for (int id : {cmd::kNotesUndo, cmd::kNotesCut, cmd::kNotesCopy, cmd::kNotesPaste,
                 cmd::kNotesDelete, cmd::kSaveNotes, cmd::kSaveNotesAs, cmd::kPrint, cmd::kAbout,
                 cmd::kExit, cmd::kTileHorizontal, cmd::kTileVertical}) {
    d.on(id, [id](Session& s) { s.shell().windowCommand(id); });
  }
  d.on(cmd::kPrintReport, [](Session& s) {
    s.shell().windowCommand(cmd::kPrintReport);
    s.refreshView();
  });
}

}  // namespace quarvel
