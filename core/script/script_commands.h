// The Scripts menu: Create Script, Open Script, Edit Script, Run Script.
#pragma once

namespace quarvel {

class CommandDispatcher;

void registerScriptCommands(CommandDispatcher& dispatcher);

}  // namespace quarvel
