// A Shell for the terminal: messages go to stderr as "title: text", notes to stdout, questions
// are answered by fixed choices and dialogs are confirmed with the values they were given.
#pragma once

#include <iosfwd>

#include "core/app/shell.h"

namespace quarvel {

class ConsoleShell : public Shell {
 public:
  ConsoleShell(std::ostream& out, std::ostream& err) : out_(out), err_(err) {}

  void showMessage(std::string_view title, std::string_view text) override;
  bool askYesNo(std::string_view title, std::string_view text) override;
  std::optional<std::string> chooseFile(const FileRequest& request) override;
  int runDialog(DialogModel& dialog) override;
  void menuChanged(const MenuItem&) override {}
  void repaintPlot(bool) override {}
  void windowCommand(int) override {}
  void appendNotes(std::string_view line) override;
  void openTextViewer(const std::string&) override {}
  bool interruptRequested() override { return false; }
  void progress(double fraction, std::string_view text) override;

  // Answer given to every yes/no question (default Yes: batch work proceeds).
  void setYesNoAnswer(bool yes) { yes_ = yes; }
  void setQuiet(bool quiet) { quiet_ = quiet; }
  int messageCount() const { return messages_; }

 private:
  std::ostream& out_;
  std::ostream& err_;
  bool yes_ = true;
  bool quiet_ = false;
  int messages_ = 0;
};

}  // namespace quarvel
