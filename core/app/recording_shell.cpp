#include "core/app/recording_shell.h"

namespace quarvel {

void RecordingShell::answerDialogOk() {
  answerDialog([](DialogModel&) { return DialogModel::kOk; });
}

void RecordingShell::showMessage(std::string_view title, std::string_view text) {
  messages.push_back({std::string(title), std::string(text)});
}

bool RecordingShell::askYesNo(std::string_view title, std::string_view text) {
  questions.push_back({std::string(title), std::string(text)});
  if (yesNo_.empty()) return false;
  const bool answer = yesNo_.front();
  yesNo_.pop_front();
  return answer;
}

std::optional<std::string> RecordingShell::chooseFile(const FileRequest& request) {
  fileRequests.push_back(request);
  if (files_.empty()) return std::nullopt;
  auto answer = std::move(files_.front());
  files_.pop_front();
  return answer;
}

int RecordingShell::runDialog(DialogModel& dialog) {
  dialogTitles.push_back(dialog.title());
  if (dialogs_.empty()) return DialogModel::kCancel;
  auto answer = std::move(dialogs_.front());
  dialogs_.pop_front();
  return answer(dialog);
}

void RecordingShell::clear() {
  messages.clear();
  questions.clear();
  fileRequests.clear();
  dialogTitles.clear();
  menuChanges.clear();
  notes.clear();
  viewed.clear();
  windowCommands.clear();
  progressValues.clear();
  repaints = viewResets = 0;
}

}  // namespace quarvel
