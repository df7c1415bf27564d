// The port through which the core talks to a desktop (or a console, or a test). Everything the
// operations need from a user interface goes through here, so every message, question and
// dialog of the program can be exercised without a window system.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/app/dialog_model.h"
#include "core/app/menu_model.h"

namespace quarvel {

class Shell {
 public:
  virtual ~Shell() = default;

  // Modal message with an OK button (exclamation icon on desktops). The GUI cuts title and
  // text to 79 characters.
  virtual void showMessage(std::string_view title, std::string_view text) = 0;
  // Modal Yes/No question; true for Yes.
  virtual bool askYesNo(std::string_view title, std::string_view text) = 0;
  // File dialog; nullopt when cancelled. The returned path is what the user chose, unchecked.
  virtual std::optional<std::string> chooseFile(const FileRequest& request) = 0;
  // Runs a modal dialog; the model's values are updated in place. Returns the code of the
  // button that closed it (DialogModel::kCancel for Cancel or the window's close box).
  virtual int runDialog(DialogModel& dialog) = 0;

  // A menu item changed (enabled, checked or text); the desktop mirrors it.
  virtual void menuChanged(const MenuItem& item) = 0;
  // The plot must be drawn again from the session's state. With `resetView` the zoom and the
  // mouse mode go back to normal (the full pattern is shown), as after every command.
  virtual void repaintPlot(bool resetView) = 0;
  // Commands that act on the windows themselves (notes editing, saving and printing the notes,
  // tiling, the About box, Exit, printing the report). A shell without windows ignores them.
  virtual void windowCommand(int id) = 0;

  // One line appended to the "Input/Output" notes window.
  virtual void appendNotes(std::string_view line) = 0;
  // Shows a text file (an engine report, a summary file) to the user.
  virtual void openTextViewer(const std::string& path) = 0;

  // Long computations poll this once per cycle (Ctrl+I or a Stop button on desktops).
  virtual bool interruptRequested() = 0;
  // Progress of a long computation, fraction in [0, 1].
  virtual void progress(double fraction, std::string_view text) = 0;

  // Prints a report (the peak list, ...) with the report printer; a desktop without a printer
  // writes a PDF. A shell without a printer puts the lines into the notes.
  virtual void printReport(std::string_view title, const std::vector<std::string>& lines) {
    appendNotes(title);
    for (const auto& line : lines) appendNotes(line);
  }
};

}  // namespace quarvel
