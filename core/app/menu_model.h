// The main menu as data: one table of items from which the GUI builds its menu bar, the
// dispatcher learns every known command, `quarvel-cli commands` prints the reference, and the
// enabling rules are kept and tested without a window system.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quarvel {

enum class MenuItemKind { Menu, Command, Separator };

struct MenuItem {
  int id = 0;            // command id, or a negative id for a menu head without a command
  int parent = 0;        // id of the enclosing menu head; 0 for the top-level menus
  std::string text;      // exact menu text, with '&' marking the mnemonic
  std::string accelerator;  // "Ctrl+Z", "F1", ... (empty when none)
  MenuItemKind kind = MenuItemKind::Command;
  bool enabled = true;
  bool checked = false;
  bool checkable = false;
};

struct Accelerator {
  std::string key;  // "Ctrl+Z", "F1", ...
  int command = 0;
};

class MenuModel {
 public:
  using Listener = std::function<void(const MenuItem&)>;

  // Builds the full main menu in its start-up state (pattern menus greyed).
  static MenuModel mainMenu();

  const std::vector<MenuItem>& items() const { return items_; }
  const std::vector<Accelerator>& accelerators() const { return accelerators_; }

  const MenuItem* find(int id) const;
  bool contains(int id) const { return find(id) != nullptr; }
  bool isEnabled(int id) const;
  bool isChecked(int id) const;

  void setEnabled(int id, bool enabled);
  void setChecked(int id, bool checked);
  // Checks `id` and unchecks the other members of `group` (radio-like menu groups).
  void checkOneOf(std::initializer_list<int> group, int id);

  // Recent-file entries 211-214: changed in place when present, appended to File otherwise.
  void setRecentFiles(const std::vector<std::string>& paths);

  // The menu path of an item, e.g. "&File > Open Pattern File > xy-file (general)".
  std::string path(int id) const;

  // Called after every change of an item, so a GUI can mirror the state.
  void setListener(Listener listener) { listener_ = std::move(listener); }

 private:
  MenuItem* findMutable(int id);
  void notify(const MenuItem& item) const;

  std::vector<MenuItem> items_;
  std::vector<Accelerator> accelerators_;
  Listener listener_;
};

// Text shown for a menu item without the mnemonic marker and the accelerator part.
std::string plainMenuText(std::string_view text);

}  // namespace quarvel
