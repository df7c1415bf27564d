// The editing buttons of a ListEditor dialog control ("Change", "Add", "Insert", "Delete"), as
// plain functions on the control, so the desktop's widget and the tests share one behaviour:
// the row limit and its message live here, not in a window class.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "core/app/dialog_model.h"

namespace quarvel {

class Shell;

// Replaces row `row`; false when there is no such row.
bool listEditorChange(DialogControl& list, std::size_t row, std::vector<std::string> values);
// Appends a row. At the limit (`maxRows`, 0 = none) the overflow message is shown and nothing
// changes.
bool listEditorAdd(DialogControl& list, std::vector<std::string> values, Shell& shell);
// Inserts a row before `row` (at the end when `row` is past it), with the same limit.
bool listEditorInsert(DialogControl& list, std::size_t row, std::vector<std::string> values, Shell& shell);
// Removes row `row`; false when there is no such row.
bool listEditorDelete(DialogControl& list, std::size_t row);

}  // namespace quarvel
