// The one list of subsystems that contribute commands. Each subsystem's register function sits
// beside its operations.
#include "core/app/command_dispatcher.h"

namespace quarvel {

void registerAllCommands(CommandDispatcher& dispatcher) {
  registerAppCommands(dispatcher);
  registerFileCommands(dispatcher);
}

}  // namespace quarvel
