// The current script file chosen with Open Script or written by Create Script.
#pragma once

#include <string>

namespace quarvel {

struct ScriptState {
  std::string scriptFile;
  std::string inputListFile;
  std::string outputListFile;
};

}  // namespace quarvel
