#include "core/index/index_job_dialogs.h"

#include <algorithm>
#include <cmath>

#include "core/common/numbers.h"

namespace quarvel {

namespace {

const std::vector<std::string> kInputForms{"sinsq(th)", "1/dsq", "theta", "2theta", "d"};
const FileRequest kPeakFileRequest{"Open Peak File", {"Peak File (*.pks)"}, "pks", false};
constexpr const char* kFiles = "Files";
constexpr const char* kParameters = "Parameters";

bool notPositive(double v) { return !(v > 0); }  // zero, negative or not a number

int roundedInt(double v, int fallback) {
  return std::isfinite(v) ? static_cast<int>(nint(std::clamp(v, -1e9, 1e9))) : fallback;
}

// The two files and the input form, which both jobs ask for in the same way.
void addJobFiles(DialogModel& dialog, const std::string& peakFile, const std::string& engine, const std::string& inputFile,
                 const FileRequest& inputRequest, int inputForm) {
  dialog.edit("peakFile", "Peak file", peakFile, kFiles)
      .browse("peakFile", kPeakFileRequest, kFiles)
      .edit("inputFile", engine + " file", inputFile, kFiles)
      .browse("inputFile", inputRequest, kFiles)
      .radio("form", "Input form", kInputForms, inputForm);
}

void addJobButtons(DialogModel& dialog, const std::string& engine) {
  dialog.button("Run " + engine, kRunJob).button("Save " + engine + " file", kSaveJobFile).button("Cancel", DialogModel::kCancel);
}

}  // namespace

TreorJobSettings withTreorDefaults(TreorJobSettings settings) {
  settings.job = withJobDefaults(settings.job);
  if (notPositive(settings.maxCellEdge)) settings.maxCellEdge = 100.0;
  return settings;
}

ItoJobSettings withItoDefaults(ItoJobSettings settings, double patternWavelength) {
  ItoJob& job = settings.job;
  if (settings.inputForm < 0 || settings.inputForm > 4) settings.inputForm = 3;
  if (notPositive(job.wavelength)) job.wavelength = patternWavelength;
  if (job.maxLines <= 0) job.maxLines = 30;
  if (notPositive(job.tol2)) job.tol2 = 3.0;
  if (notPositive(job.tol3)) job.tol3 = 4.5;
  if (job.indexedLines <= 0) job.indexedLines = 14;
  if (notPositive(job.requiredMerit)) job.requiredMerit = 4.0;
  return settings;
}

DialogModel treorJobDialog(const TreorJobSettings& settings) {
  const TreorJob& job = settings.job;
  DialogModel dialog("TREOR90 Input", 260, 250);
  addJobFiles(dialog, job.peakFile, "TREOR90", settings.inputFile,
              FileRequest{"Save TREOR90 File", {"TREOR90 File (*.tre)"}, "tre", true}, job.choice);
  dialog.edit("wavelength", "Wavelength", job.wavelength, kParameters)
      .edit("maxVolume", "Max. volume", job.maxVolume, kParameters)
      .edit("maxCellEdge", "Max. cell edge", settings.maxCellEdge, kParameters)
      .edit("d1", "Tolerance d1", job.d1, kParameters)
      .edit("d2", "Tolerance d2", job.d2, kParameters)
      .edit("unindexed", "Unindexed lines", static_cast<double>(job.unindexed), kParameters)
      .edit("merit", "Required FOM", job.merit, kParameters);
  addJobButtons(dialog, "TREOR90");
  return dialog;
}

DialogModel itoJobDialog(const ItoJobSettings& settings) {
  const ItoJob& job = settings.job;
  DialogModel dialog("ITO Input", 260, 250);
  addJobFiles(dialog, job.peakFile, "ITO", settings.inputFile,
              FileRequest{"Save ITO File", {"ITO File (*.inp)"}, "inp", true}, settings.inputForm);
  dialog.edit("wavelength", "Wavelength", job.wavelength, kParameters)
      .edit("zero", "Zero shift", job.zeroShift, kParameters)
      .edit("maxLines", "Max. lines", static_cast<double>(job.maxLines), kParameters)
      .edit("tol2", "Tolerance d1", job.tol2, kParameters)
      .edit("tol3", "Tolerance d2", job.tol3, kParameters)
      .edit("indexedLines", "Indexed lines", static_cast<double>(job.indexedLines), kParameters)
      .edit("merit", "Required FOM", job.requiredMerit, kParameters);
  addJobButtons(dialog, "ITO");
  return dialog;
}

void readTreorJobDialog(const DialogModel& dialog, TreorJobSettings& settings) {
  TreorJob& job = settings.job;
  job.peakFile = trim(dialog.text("peakFile"));
  settings.inputFile = trim(dialog.text("inputFile"));
  job.choice = dialog.selected("form");
  job.wavelength = dialog.number("wavelength", job.wavelength);
  job.maxVolume = dialog.number("maxVolume", job.maxVolume);
  settings.maxCellEdge = dialog.number("maxCellEdge", settings.maxCellEdge);
  job.d1 = dialog.number("d1", job.d1);
  job.d2 = dialog.number("d2", job.d2);
  job.unindexed = roundedInt(dialog.number("unindexed", job.unindexed), job.unindexed);
  job.merit = dialog.number("merit", job.merit);
}

void readItoJobDialog(const DialogModel& dialog, ItoJobSettings& settings) {
  ItoJob& job = settings.job;
  job.peakFile = trim(dialog.text("peakFile"));
  settings.inputFile = trim(dialog.text("inputFile"));
  settings.inputForm = dialog.selected("form");
  job.wavelength = dialog.number("wavelength", job.wavelength);
  job.zeroShift = dialog.number("zero", job.zeroShift);
  job.maxLines = roundedInt(dialog.number("maxLines", job.maxLines), job.maxLines);
  job.tol2 = dialog.number("tol2", job.tol2);
  job.tol3 = dialog.number("tol3", job.tol3);
  job.indexedLines = roundedInt(dialog.number("indexedLines", job.indexedLines), job.indexedLines);
  job.requiredMerit = dialog.number("merit", job.requiredMerit);
}

}  // namespace quarvel
