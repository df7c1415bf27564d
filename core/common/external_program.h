// Starting an external program (the user's text editor) on a file, without waiting for it.
#pragma once

#include <string>

namespace quarvel {

// Starts `program` with `argument` as its one argument. False when the program does not exist
// or could not be started; the caller then falls back to showing the file itself.
bool startExternalProgram(const std::string& program, const std::string& argument);

}  // namespace quarvel
