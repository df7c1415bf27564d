// The one list of subsystems that contribute commands. Each subsystem's register function sits
// beside its operations.
#include "core/app/command_dispatcher.h"
#include "core/process/modify_commands.h"

namespace quarvel {

void registerAllCommands(CommandDispatcher& dispatcher) {
  registerAppCommands(dispatcher);
  registerFileCommands(dispatcher);
  registerModifyCommands(dispatcher);
}

}  // namespace quarvel
