// The open and save file choices every command uses: the user's choice is checked, the
// "Invalid file selection" message is shown for an unusable one, and an opened file's folder
// becomes the working directory.
#pragma once

#include <optional>
#include <string>

#include "core/app/dialog_model.h"

namespace quarvel {

class Session;

// Whether cancelling the file dialog is silent or answered with "Invalid file selection" like a
// bad choice (the commands that cannot go on without a file).
enum class CancelChoice { Silent, IsInvalid };

// An existing regular file, or nullopt (cancelled, or "Invalid file selection" shown).
// On success the working directory moves to the file's folder.
std::optional<std::string> chooseFileToOpen(Session& session, const FileRequest& request,
                                            CancelChoice cancel = CancelChoice::Silent);

// A usable path to write (not empty, not a folder, its folder exists), or nullopt.
// A name without extension gets the request's default extension.
std::optional<std::string> chooseFileToSave(Session& session, FileRequest request);

}  // namespace quarvel
