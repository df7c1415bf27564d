// A Shell that records everything the core says and answers questions, file choices and
// dialogs from queued answers. Used by the tests, the benchmarks and the fuzzers, so that every
// message text, title and menu change can be checked without a window system.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/app/shell.h"

namespace quarvel {

struct RecordedMessage {
  std::string title;
  std::string text;
  bool operator==(const RecordedMessage&) const = default;
};

class RecordingShell : public Shell {
 public:
  using DialogAnswer = std::function<int(DialogModel&)>;

  // Queued answers, consumed in order. With nothing queued: askYesNo answers No, chooseFile
  // cancels and runDialog cancels.
  void answerYesNo(bool yes) { yesNo_.push_back(yes); }
  void answerFile(std::optional<std::string> path) { files_.push_back(std::move(path)); }
  void answerDialog(DialogAnswer answer) { dialogs_.push_back(std::move(answer)); }
  // Presses OK after setting nothing.
  void answerDialogOk();

  void showMessage(std::string_view title, std::string_view text) override;
  bool askYesNo(std::string_view title, std::string_view text) override;
  std::optional<std::string> chooseFile(const FileRequest& request) override;
  int runDialog(DialogModel& dialog) override;
  void menuChanged(const MenuItem& item) override { menuChanges.push_back(item); }
  void repaintPlot(bool resetView) override { ++repaints; if (resetView) ++viewResets; }
  void windowCommand(int id) override { windowCommands.push_back(id); }
  void appendNotes(std::string_view line) override { notes.emplace_back(line); }
  void openTextViewer(const std::string& path) override { viewed.push_back(path); }
  bool interruptRequested() override { return interrupt; }
  void progress(double fraction, std::string_view) override { progressValues.push_back(fraction); }

  // The last message, or an empty one.
  RecordedMessage lastMessage() const { return messages.empty() ? RecordedMessage{} : messages.back(); }
  void clear();

  std::vector<RecordedMessage> messages;
  std::vector<RecordedMessage> questions;
  std::vector<FileRequest> fileRequests;
  std::vector<std::string> dialogTitles;
  std::vector<MenuItem> menuChanges;
  std::vector<std::string> notes;
  std::vector<std::string> viewed;
  std::vector<int> windowCommands;
  std::vector<double> progressValues;
  int repaints = 0;
  int viewResets = 0;
  bool interrupt = false;

 private:
  std::deque<bool> yesNo_;
  std::deque<std::optional<std::string>> files_;
  std::deque<DialogAnswer> dialogs_;
};

}  // namespace quarvel
