#include "gui/desktop_app.h"

#include "core/app/messages.h"
#include "core/pattern/pattern_files.h"
#include "core/pattern/summary_file.h"

namespace quarvel {

DesktopApp::DesktopApp(const std::filesystem::path& workingDirectory)
    : shell_(window_), session_(shell_, workingDirectory), dispatcher_(session_) {
  window_.attach(session_, dispatcher_);
  session_.start();
  session_.refreshView();
}

bool DesktopApp::openFile(const std::string& path) {
  const auto kind = kindForExtension(path);
  if (!kind) {
    session_.message(msg::kFileError, msg::kUnrecognizedExtension);
    return false;
  }
  return kind->summary ? openSummaryFile(session_, path) : openPatternFile(session_, kind->format, path);
}

}  // namespace quarvel
