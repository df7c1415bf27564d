// The Peak search menu.
#pragma once

namespace quarvel {

class CommandDispatcher;
class Session;

void registerPeakCommands(CommandDispatcher& dispatcher);

// The automatic search on slot 1 with the session's options; replaces the peak list.
void runPeakSearch(Session& session);

}  // namespace quarvel
