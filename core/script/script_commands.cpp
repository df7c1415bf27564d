#include "core/script/script_commands.h"

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/file_dialogs.h"
#include "core/app/session.h"
#include "core/common/external_program.h"
#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/script/script_file.h"
#include "core/script/script_runner.h"

namespace quarvel {
namespace {

const FileRequest kScriptRequest{"Open Script File", {"Script File (*.scr)"}, "scr", false};
const FileRequest kListRequest{"Open File List", {"File list (*.*)"}, "", false};

DialogModel createScriptDialog(const Session& s) {
  const ScriptState& st = s.script;
  const ScriptDefinition& d = st.lastCreated;
  const ProcessSettings& p = s.process;
  DialogModel dialog("Create Script", 348, 276);
  const std::string files = "File names", manip = "Data manipulation";
  dialog.edit("script", "Script file", st.scriptFile, files)
      .browse("script", FileRequest{"Script file", {"Script File (*.scr)"}, "scr", true}, files)
      .edit("inputList", "Input file list file", d.inputList, files)
      .browse("inputList", kListRequest, files)
      .edit("outputList", "Output file list file", d.outputList, files)
      .browse("outputList", kListRequest, files)
      .radio("input", "Input format", {"gdf", "xy", "std", "udf", "xrdml"}, d.inputFormat - 1)
      .radio("output", "Ouput format", {"gdf", "xy", "xyw", "std", "Add-up"}, d.outputFormat - 1)
      .checkBox("useZero", "Zero shift:", st.useZero, manip)
      .edit("zero", "", p.zeroShift, manip)
      .checkBox("useTruncate", "Truncate:", st.useTruncate, manip)
      .edit("low", "Low", p.truncateLower, manip)
      .edit("high", "High", p.truncateUpper, manip)
      .checkBox("useSmooth", "Smooth:", st.useSmooth, manip)
      .edit("smooth", "Smoothing factor", static_cast<double>(p.smoothingFactor), manip)
      .checkBox("useSavitzkyGolay", "Savitsky-Golay filtering:", st.useSavitzkyGolay, manip)
      .edit("savitzkyGolay", "Factor (5-25)", static_cast<double>(p.savitzkyGolayWindow), manip)
      .checkBox("useConvert", "Convert:", st.useConvert, manip)
      .label("Wavelength:", manip)
      .edit("old", "Old", p.convert.oldWavelength, manip)
      .edit("new", "New", p.convert.newWavelength, manip)
      .edit("start", "Start", p.convert.start, manip)
      .edit("stop", "Stop", p.convert.stop, manip)
      .edit("step", "Step", p.convert.step, manip)
      .checkBox("useScale", "Scale:", st.useScale, manip)
      .edit("scale", "Factor", p.scaleFactor, manip)
      .checkBox("useBackground", "Background subtraction:", st.useBackground, manip)
      .edit("background", "Smoothing factor", static_cast<double>(s.background.autoSmoothingFactor), manip)
      .okCancel();
  return dialog;
}

void createScript(Session& s) {
  DialogModel dialog = createScriptDialog(s);
  if (s.shell().runDialog(dialog) == DialogModel::kCancel) return;
  ScriptState& st = s.script;
  ScriptDefinition d;
  d.inputList = trim(dialog.text("inputList"));
  d.outputList = trim(dialog.text("outputList"));
  d.inputFormat = dialog.selected("input") + 1;
  d.outputFormat = dialog.selected("output") + 1;
  auto number = [&](const char* key, double fallback) { return dialog.number(key, fallback); };
  st.useZero = dialog.checked("useZero");
  st.useTruncate = dialog.checked("useTruncate");
  st.useSmooth = dialog.checked("useSmooth");
  st.useSavitzkyGolay = dialog.checked("useSavitzkyGolay");
  st.useConvert = dialog.checked("useConvert");
  st.useScale = dialog.checked("useScale");
  st.useBackground = dialog.checked("useBackground");
  if (st.useZero) d.zeroShift = static_cast<float>(number("zero", 0));
  if (st.useTruncate) d.truncate = std::pair{static_cast<float>(number("low", 0)), static_cast<float>(number("high", 0))};
  if (st.useScale) d.scale = number("scale", 1);
  if (st.useSmooth) d.smooth = static_cast<int>(nint(number("smooth", 0)));
  if (st.useSavitzkyGolay) d.savitzkyGolay = static_cast<int>(nint(number("savitzkyGolay", 0)));
  if (st.useBackground) d.background = static_cast<int>(nint(number("background", 0)));
  if (st.useConvert) {
    ConvertSettings c;
    c.oldWavelength = static_cast<float>(number("old", 0));
    c.newWavelength = static_cast<float>(number("new", 0));
    c.start = static_cast<float>(number("start", 0));
    c.stop = static_cast<float>(number("stop", 0));
    c.step = static_cast<float>(number("step", 0));
    d.convert = c;
  }
  st.lastCreated = d;
  const std::string name = trim(dialog.text("script"));
  if (name.empty()) return;
  AtomicFile file(s.resolve(name));
  if (!file.open()) {
    s.message("File Error", "Error opening script file");
    return;
  }
  bool written = true;
  for (const auto& line : scriptLines(withoutVoidCommands(d))) written = written && file.writeLine(line);
  if (!written || !file.commit()) {
    s.message("File Error", "Error opening script file");
    return;
  }
  st.scriptFile = s.resolve(name).string();
}

void openScript(Session& s) {
  auto path = chooseFileToOpen(s, kScriptRequest);
  if (!path) {
    s.message("File Error", "No script file");
    return;
  }
  s.script.scriptFile = *path;
}

void editScript(Session& s) {
  if (s.script.scriptFile.empty()) {
    s.message("File Error", "No script file");
    return;
  }
  if (!startExternalProgram(s.settings().values.editor, s.script.scriptFile)) s.shell().openTextViewer(s.script.scriptFile);
}

void runCurrentScript(Session& s) {
  if (s.script.scriptFile.empty()) {
    openScript(s);
    if (s.script.scriptFile.empty()) return;
  }
  runScript(s, s.script.scriptFile, 1);
}

}  // namespace

void registerScriptCommands(CommandDispatcher& d) {
  d.on(cmd::kCreateScript, createScript);
  d.on(cmd::kOpenScript, openScript);
  d.on(cmd::kEditScript, editScript);
  d.on(cmd::kRunScript, runCurrentScript);
}

}  // namespace quarvel
