// The Index menu: the TREOR90 and ITO jobs (dialog, input file from the peak file, the engine
// run in-process into treor.out / ito.out, the report in the text viewer), View Output, and
// reading a report back into the solution table to mark a chosen cell's reflections.
#pragma once

namespace quarvel {

class CommandDispatcher;

void registerIndexCommands(CommandDispatcher& dispatcher);

}  // namespace quarvel
