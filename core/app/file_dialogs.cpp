#include "core/app/file_dialogs.h"

#include <filesystem>
#include <system_error>

#include "core/app/messages.h"
#include "core/app/session.h"

namespace quarvel {

namespace fs = std::filesystem;

std::optional<std::string> chooseFileToOpen(Session& session, const FileRequest& request, CancelChoice cancel) {
  auto choice = session.shell().chooseFile(request);
  if (!choice) {
    if (cancel == CancelChoice::IsInvalid) session.message(msg::kFileError, msg::kInvalidFileSelection);
    return std::nullopt;
  }
  const fs::path path = session.resolve(*choice);
  std::error_code ec;
  if (choice->empty() || !fs::is_regular_file(path, ec)) {
    session.message(msg::kFileError, msg::kInvalidFileSelection);
    return std::nullopt;
  }
  session.setWorkingDirectory(path.parent_path());
  return path.string();
}

std::optional<std::string> chooseFileToSave(Session& session, FileRequest request) {
  request.save = true;
  auto choice = session.shell().chooseFile(request);
  if (!choice) return std::nullopt;
  fs::path path = session.resolve(*choice);
  std::error_code ec;
  const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  if (choice->empty() || fs::is_directory(path, ec) || !fs::is_directory(folder, ec)) {
    session.message(msg::kFileError, msg::kInvalidFileSelection);
    return std::nullopt;
  }
  if (!path.has_extension() && !request.defaultExtension.empty())
    path += "." + request.defaultExtension;
  return path.string();
}

}  // namespace quarvel
