// Dialogs as data. An operation builds a DialogModel with the exact captions of its dialog,
// hands it to Shell::runDialog, and reads the values back after the user confirmed. The GUI
// renders any model generically; tests answer it from a script.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarvel {

enum class ControlKind {
  Label,       // static text
  Edit,        // one-line text field; `text` holds the value
  CheckBox,    // `checked`
  RadioGroup,  // `options` are the button texts, `selected` the chosen index
  ListBox,     // `options` are the lines, `selected` the chosen line (-1: none)
  ListEditor,  // rows of `columns` edited with Change/Add/Insert/Delete, at most `maxRows`
  Table,       // rows x columns grid; `editableColumns` says which columns the user may change
  Browse,      // a "Browse" button that fills the edit `target` from a file dialog
  Button,      // closes the dialog and makes runDialog return `returnCode`
  PlotPick,    // while the dialog is open, clicks in the plot add their 2θ to `rows` (one per row)
};

struct FileRequest {
  std::string title;                 // dialog title, e.g. "Open Pattern File"
  std::vector<std::string> filters;  // e.g. "Open pattern file (*.xy)"; "All Files (*.*)" is added
  std::string defaultExtension;      // without the dot
  bool save = false;
};

struct DialogControl {
  ControlKind kind = ControlKind::Label;
  std::string key;    // name by which the operation reads the value back
  std::string label;  // caption shown to the user (exact text)
  std::string group;  // caption of the group box the control sits in ("" for none)
  std::string text;   // Edit value
  bool checked = false;
  int selected = 0;
  std::vector<std::string> options;
  std::vector<std::string> columns;
  std::vector<bool> editableColumns;
  std::vector<std::vector<std::string>> rows;
  std::size_t maxRows = 0;          // ListEditor: adding beyond this shows the overflow message
  std::string overflowTitle, overflowText;
  std::string target;               // Browse: key of the edit it fills
  FileRequest file;                 // Browse: the file dialog to show
  int returnCode = 0;               // Button
  bool enabled = true;
};

class DialogModel {
 public:
  static constexpr int kCancel = 0;
  static constexpr int kOk = 1;

  DialogModel(std::string title, int widthDu, int heightDu)
      : title_(std::move(title)), width_(widthDu), height_(heightDu) {}

  const std::string& title() const { return title_; }
  int width() const { return width_; }    // dialog units
  int height() const { return height_; }  // dialog units

  // Builders; `group` is the caption of the enclosing group box, empty for none.
  DialogModel& label(std::string text, std::string group = "");
  DialogModel& edit(std::string key, std::string label, std::string value, std::string group = "");
  DialogModel& edit(std::string key, std::string label, double value, std::string group = "");
  DialogModel& checkBox(std::string key, std::string label, bool checked, std::string group = "");
  DialogModel& radio(std::string key, std::string caption, std::vector<std::string> options,
                     int selected);
  DialogModel& listBox(std::string key, std::string label, std::vector<std::string> lines);
  DialogModel& browse(std::string target, FileRequest request, std::string group = "");
  DialogModel& button(std::string label, int returnCode);
  // Positions marked in the plot while the dialog is open, read back as 2θ values.
  DialogModel& plotPick(std::string key, std::string label);
  std::vector<double> picked(std::string_view key) const;
  // OK (kOk) and Cancel (kCancel).
  DialogModel& okCancel();
  DialogControl& add(DialogControl control);

  const std::vector<DialogControl>& controls() const { return controls_; }
  std::vector<DialogControl>& controls() { return controls_; }

  DialogControl* find(std::string_view key);
  const DialogControl* find(std::string_view key) const;
  DialogControl& at(std::string_view key);  // throws std::out_of_range for an unknown key

  // Value access by key.
  std::string text(std::string_view key) const;
  // The edit's text read as a number (locale independent); nullopt when it is not a number.
  std::optional<double> number(std::string_view key) const;
  double number(std::string_view key, double fallback) const;
  bool checked(std::string_view key) const;
  int selected(std::string_view key) const;
  void setText(std::string_view key, std::string value);
  void setChecked(std::string_view key, bool value);
  void setSelected(std::string_view key, int index);

 private:
  std::string title_;
  int width_;
  int height_;
  std::vector<DialogControl> controls_;
};

// Formats a number for an edit field: shortest text that reads back to the same float.
std::string formatEditNumber(double value);

}  // namespace quarvel
