#include "cli/commands_command.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <ostream>

#include "core/app/menu_model.h"

namespace quarvel {

void printCommandTable(std::ostream& out) {
  const MenuModel menu = MenuModel::mainMenu();
  out << fmt::format("{:>5}  {:<60}  {}\n", "id", "menu path", "accelerator");
  for (const MenuItem& item : menu.items()) {
    if (item.kind != MenuItemKind::Command) continue;
    out << fmt::format("{:>5}  {:<60}  {}\n", item.id, plainMenuText(menu.path(item.id)), item.accelerator);
  }
  for (const Accelerator& acc : menu.accelerators()) {
    if (!menu.contains(acc.command))
      out << fmt::format("{:>5}  {:<60}  {}\n", acc.command, "(accelerator only)", acc.key);
  }
}

void addCommandsCommand(CLI::App& app, std::ostream& out) {
  auto* sub = app.add_subcommand("commands", "List every menu command with its id, menu path and accelerator");
  sub->callback([&out] { printCommandTable(out); });
}

}  // namespace quarvel
