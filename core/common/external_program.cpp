#include "core/common/external_program.h"

#include <filesystem>

#ifdef _WIN32
#include <cstdlib>
#else
#include <spawn.h>
#include <sys/wait.h>
extern char** environ;
#endif

namespace quarvel {

bool startExternalProgram(const std::string& program, const std::string& argument) {
  std::error_code ec;
  if (program.empty() || !std::filesystem::is_regular_file(program, ec)) return false;
#ifdef _WIN32
  const std::string command = "start \"\" \"" + program + "\" \"" + argument + "\"";
  return std::system(command.c_str()) == 0;
#else
  std::string p = program, a = argument;
  char* argv[] = {p.data(), a.data(), nullptr};
  pid_t pid = 0;
  return posix_spawn(&pid, program.c_str(), nullptr, nullptr, argv, environ) == 0;
#endif
}

}  // namespace quarvel
