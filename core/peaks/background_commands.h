// The Background menu. The operations are also callable without dialogs (a script runs them
// with `scriptRunning` set: no question, no undo copy, no refresh).
#pragma once

#include <string>

#include "core/pattern/pattern_files.h"
#include "core/peaks/background_state.h"

namespace quarvel {

class CommandDispatcher;
class Session;

void registerBackgroundCommands(CommandDispatcher& dispatcher);

// Reads a background file into slot 2, refuses a different step ("Incompatible step sizes"),
// cuts both patterns to their common range and shows the background.
bool loadBackground(Session& session, BackgroundType type, OpenFormat format, const std::string& path);
// Subtracts the background after the "Background = ... %. Subtract?" question (asked unless a
// script runs). Returns true when the difference was formed.
bool subtractBackground(Session& session);
// Builds the automatic background of slot 1 with the given window into slot 2 and subtracts it
// after the "scale = ... Subtract now?" question (asked unless a script runs). Nothing happens
// for windows of 2 or less.
bool autoSubtractBackground(Session& session, int window);

}  // namespace quarvel
