// The row editor of dialogs such as "Excluded region(s)": one edit field per column above a
// list of rows, and the buttons Change, Add, Insert and Delete. Adding beyond the control's
// row limit shows its overflow message.
#pragma once

#include <string>
#include <vector>

#include <QWidget>

#include "core/app/dialog_model.h"

class QLineEdit;
class QTableWidget;

namespace quarvel {

class Shell;

class RowListEditor : public QWidget {
  Q_OBJECT

 public:
  RowListEditor(const DialogControl& control, Shell& shell, QWidget* parent = nullptr);

  std::vector<std::vector<std::string>> rows() const;
  int selectedRow() const;

  // The editing steps behind the buttons, on the selected row and the edit fields.
  void changeRow();
  void addRow();
  void insertRow();
  void deleteRow();

 private:
  bool roomForOneMore();
  void putRow(int row);
  void showSelectedInFields();

  const DialogControl& control_;
  Shell& shell_;
  std::vector<QLineEdit*> fields_;
  QTableWidget* table_;
};

}  // namespace quarvel
