#include "core/app/list_editor.h"

#include <algorithm>

#include "core/app/shell.h"

namespace quarvel {
namespace {

bool roomForOneMore(const DialogControl& list, Shell& shell) {
  if (list.maxRows == 0 || list.rows.size() < list.maxRows) return true;
  shell.showMessage(list.overflowTitle, list.overflowText);
  return false;
}

}  // namespace

bool listEditorChange(DialogControl& list, std::size_t row, std::vector<std::string> values) {
  if (row >= list.rows.size()) return false;
  list.rows[row] = std::move(values);
  list.selected = static_cast<int>(row);
  return true;
}

bool listEditorAdd(DialogControl& list, std::vector<std::string> values, Shell& shell) {
  if (!roomForOneMore(list, shell)) return false;
  list.rows.push_back(std::move(values));
  list.selected = static_cast<int>(list.rows.size()) - 1;
  return true;
}

bool listEditorInsert(DialogControl& list, std::size_t row, std::vector<std::string> values, Shell& shell) {
  if (!roomForOneMore(list, shell)) return false;
  row = std::min(row, list.rows.size());
  list.rows.insert(list.rows.begin() + static_cast<std::ptrdiff_t>(row), std::move(values));
  list.selected = static_cast<int>(row);
  return true;
}

bool listEditorDelete(DialogControl& list, std::size_t row) {
  if (row >= list.rows.size()) return false;
  list.rows.erase(list.rows.begin() + static_cast<std::ptrdiff_t>(row));
  list.selected = list.rows.empty() ? -1 : static_cast<int>(std::min(row, list.rows.size() - 1));
  return true;
}

}  // namespace quarvel
