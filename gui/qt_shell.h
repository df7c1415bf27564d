// The desktop's side of the Shell port: message boxes, questions, file dialogs and generic
// dialogs in Qt, menu changes mirrored on the menu bar, and everything else handed to the frame.
#pragma once

#include <QString>

#include "core/app/shell.h"

namespace quarvel {

class MainWindow;

class QtShell : public Shell {
 public:
  explicit QtShell(MainWindow& window) : window_(window) {}

  void showMessage(std::string_view title, std::string_view text) override;
  bool askYesNo(std::string_view title, std::string_view text) override;
  std::optional<std::string> chooseFile(const FileRequest& request) override;
  int runDialog(DialogModel& dialog) override;
  void menuChanged(const MenuItem& item) override;
  void repaintPlot(bool resetView) override;
  void windowCommand(int id) override;
  void appendNotes(std::string_view line) override;
  void openTextViewer(const std::string& path) override;
  bool interruptRequested() override;
  void progress(double fraction, std::string_view text) override;
  void printReport(std::string_view title, const std::vector<std::string>& lines) override;

 private:
  MainWindow& window_;
};

// The filter list of a file dialog: the request's filters, then "All Files (*.*)".
QString fileDialogFilters(const FileRequest& request);

}  // namespace quarvel
