// A modal Qt dialog drawn from any DialogModel: edits, check boxes, radio groups, lists, row
// editors, tables, Browse buttons and the closing buttons, with the model's exact captions.
// Every widget is named after its control's key, so tests can fill it in like a user.
#pragma once

#include <functional>
#include <vector>

#include <QDialog>

#include "core/app/dialog_model.h"

class QFormLayout;
class QHBoxLayout;
class QListWidget;
class QVBoxLayout;
class QGroupBox;
class QPushButton;

namespace quarvel {

class Shell;

class DialogView : public QDialog {
  Q_OBJECT

 public:
  // `shell` answers the Browse buttons' file dialogs and shows the row editors' overflow message.
  DialogView(DialogModel& model, Shell& shell, QWidget* parent = nullptr);

  // Closes the dialog as the button with this code does: values are written back into the
  // model unless the code is DialogModel::kCancel.
  void press(int returnCode);

  // True when the dialog collects positions clicked in the plot; it must then stay non-modal.
  bool picksFromPlot() const { return picks_ != nullptr; }
  // One position marked in the plot, in degrees 2θ.
  void addPick(double twoTheta);

  // Object name of the push button captioned `label`.
  static QString buttonName(const std::string& label) { return "button:" + QString::fromStdString(label); }

 private:
  QFormLayout& formFor(const std::string& group);
  void addControl(DialogControl& control);
  void addLabel(const DialogControl& c);
  void addEdit(const DialogControl& c);
  void addCheckBox(const DialogControl& c);
  void addRadioGroup(const DialogControl& c);
  void addListBox(const DialogControl& c);
  void addListEditor(const DialogControl& c);
  void addTable(const DialogControl& c);
  void addBrowse(const DialogControl& c);
  QPushButton* makeBrowseButton(const DialogControl& c);
  void addButton(const DialogControl& c);
  void addPlotPick(const DialogControl& c);
  void writeBack();
  void sizeFromDialogUnits();

  DialogModel& model_;
  Shell& shell_;
  QVBoxLayout* body_;
  QHBoxLayout* buttons_;
  QListWidget* picks_ = nullptr;
  std::vector<std::pair<std::string, QFormLayout*>> forms_;  // "" = the dialog's own area
  std::vector<std::function<void()>> writers_;  // each copies one widget's value into the model
  // A check box and the edits and labels that follow it in the same group share one row, so
  // that "Truncate:  Low [ ]  High [ ]" reads as one option.
  QHBoxLayout* optionRow_ = nullptr;
  std::string optionRowGroup_;
};

}  // namespace quarvel
