// The dialogs of the two indexing jobs, "TREOR90 Input" and "ITO Input", built from the kept
// parameter sets and read back into them.
#pragma once

#include "core/app/dialog_model.h"
#include "core/index/indexing_state.h"

namespace quarvel {

// runDialog's answers besides DialogModel::kCancel.
inline constexpr int kRunJob = 1;
inline constexpr int kSaveJobFile = 2;

// Out-of-range values replaced by their defaults before the dialog is shown.
TreorJobSettings withTreorDefaults(TreorJobSettings settings);
ItoJobSettings withItoDefaults(ItoJobSettings settings, double patternWavelength);

DialogModel treorJobDialog(const TreorJobSettings& settings);
DialogModel itoJobDialog(const ItoJobSettings& settings);

// The values the user confirmed; a field that is not a number keeps its previous value.
void readTreorJobDialog(const DialogModel& dialog, TreorJobSettings& settings);
void readItoJobDialog(const DialogModel& dialog, ItoJobSettings& settings);

}  // namespace quarvel
