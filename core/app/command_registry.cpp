// The one list of subsystems that contribute commands. Each subsystem's register function sits
// beside its operations.
#include "core/app/command_dispatcher.h"
#include "core/peaks/background_commands.h"
#include "core/peaks/peak_commands.h"
#include "core/process/modify_commands.h"
#include "core/index/index_commands.h"
#include "core/script/script_commands.h"

namespace quarvel {

void registerAllCommands(CommandDispatcher& dispatcher) {
  registerAppCommands(dispatcher);
  registerFileCommands(dispatcher);
  registerModifyCommands(dispatcher);
  registerBackgroundCommands(dispatcher);
  registerPeakCommands(dispatcher);
  registerScriptCommands(dispatcher);
  registerIndexCommands(dispatcher);
}

}  // namespace quarvel
