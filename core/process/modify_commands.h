// The commands of the Modify menu: each shows its dialog and runs its operation in the common
// frame. Registered once from the command registry.
#pragma once

namespace quarvel {

class CommandDispatcher;

void registerModifyCommands(CommandDispatcher& dispatcher);

// Parts of the above, one per file.
void registerBasicModifyCommands(CommandDispatcher& dispatcher);       // basic_commands.cpp
void registerCorrectionCommands(CommandDispatcher& dispatcher);        // correction_commands.cpp
void registerExcludedRegionsCommand(CommandDispatcher& dispatcher);    // excluded_regions_command.cpp
void registerEditPatternCommand(CommandDispatcher& dispatcher);        // edit_pattern_command.cpp

}  // namespace quarvel
