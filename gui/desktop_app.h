// The desktop program put together: the frame, the Qt shell, the one Session and its command
// dispatcher, in the order each needs the other. main() makes one; GUI tests make their own.
#pragma once

#include <filesystem>
#include <string>

#include "core/app/command_dispatcher.h"
#include "core/app/session.h"
#include "gui/main_window.h"
#include "gui/qt_shell.h"

namespace quarvel {

class DesktopApp {
 public:
  // Builds the windows and menus, then starts the session (settings file, working state,
  // recent files) in `workingDirectory`.
  explicit DesktopApp(const std::filesystem::path& workingDirectory);

  // Opens a pattern or summary file as a recent-file entry would, judged by its extension.
  // False (after the program's message) when it cannot.
  bool openFile(const std::string& path);

  MainWindow& window() { return window_; }
  QtShell& shell() { return shell_; }
  Session& session() { return session_; }
  CommandDispatcher& dispatcher() { return dispatcher_; }

 private:
  MainWindow window_;
  QtShell shell_;
  Session session_;
  CommandDispatcher dispatcher_;
};

}  // namespace quarvel
