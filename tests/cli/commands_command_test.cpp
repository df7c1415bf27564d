#include <gtest/gtest.h>

#include <sstream>

#include "cli/commands_command.h"

namespace quarvel {
namespace {

TEST(CommandsCommand, ListsEveryCommandWithItsMenuPathAndAccelerator) {
  std::ostringstream out;
  printCommandTable(out);
  const std::string table = out.str();
  EXPECT_NE(table.find("  645  File > Open Pattern File > xy-file (general)"), std::string::npos);
  EXPECT_NE(table.find("  635  Modify > Undo"), std::string::npos);
  EXPECT_NE(table.find("Ctrl+Z"), std::string::npos);
  EXPECT_NE(table.find("  614  (accelerator only)"), std::string::npos);
  EXPECT_NE(table.find("Enery dispersive > Energy to Angle"), std::string::npos);
}

}  // namespace
}  // namespace quarvel
