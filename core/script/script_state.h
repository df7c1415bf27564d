// The current script file (chosen with Open Script or written by Create Script) and the values
// the Create Script dialog opens with.
#pragma once

#include <string>

#include "core/script/script_file.h"

namespace quarvel {

struct ScriptState {
  std::string scriptFile;
  ScriptDefinition lastCreated;
  // "use" flags of the optional commands, as ticked in the dialog last time.
  bool useZero = false, useTruncate = false, useScale = false, useSmooth = false, useSavitzkyGolay = false,
       useBackground = false, useConvert = false;
};

}  // namespace quarvel
