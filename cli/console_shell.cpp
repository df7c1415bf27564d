#include "cli/console_shell.h"

#include <ostream>
#include <string>

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

// One progress line, rewritten in place: padded so a shorter text covers a longer one, and
// ended with a newline when the work is complete so later output starts on its own line.
void ConsoleShell::progress(double fraction, std::string_view text) {
  if (quiet_) return;
  std::string line(text);
  line += ' ' + std::to_string(static_cast<int>(fraction * 100.0 + 0.5)) + '%';
  if (line.size() < 40) line.resize(40, ' ');
  err_ << '\r' << line << (fraction >= 1.0 ? "\n" : "") << std::flush;
}

}  // namespace quarvel
