#include "cli/console_shell.h"

#include <ostream>

namespace quarvel {

void ConsoleShell::showMessage(std::string_view title, std::string_view text) {
  ++messages_;
  err_ << title << ": " << text << '\n';
}

bool ConsoleShell::askYesNo(std::string_view title, std::string_view text) {
  if (!quiet_) err_ << title << ": " << text << (yes_ ? " [yes]" : " [no]") << '\n';
  return yes_;
}

std::optional<std::string> ConsoleShell::chooseFile(const FileRequest&) { return std::nullopt; }

int ConsoleShell::runDialog(DialogModel&) { return DialogModel::kOk; }

void ConsoleShell::appendNotes(std::string_view line) {
  if (!quiet_) out_ << line << '\n';
}

void ConsoleShell::progress(double fraction, std::string_view text) {
  if (!quiet_) err_ << '\r' << text << ' ' << static_cast<int>(fraction * 100.0 + 0.5) << "%" << std::flush;
}

}  // namespace quarvel
