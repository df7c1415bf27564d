// The menu bar built from the menu model, and kept in step with it: every item's text,
// accelerator, enabled and checked state mirrors the model, and every triggered action or
// accelerator calls back with the command id.
#pragma once

#include <functional>
#include <map>

#include <QAction>
#include <QMenu>
#include <QMenuBar>

#include "core/app/menu_model.h"

namespace quarvel {

class MenuBinding {
 public:
  using Trigger = std::function<void(int id)>;

  // Builds the menus of `model` into `bar`; accelerators without a menu item become actions
  // of `window`, so they work wherever the focus is.
  MenuBinding(QMenuBar& bar, QWidget& window, const MenuModel& model, Trigger trigger);

  // Mirrors one changed item; an item not yet in the bar (a recent file) is added.
  void apply(const MenuItem& item);

  QAction* action(int id) const;  // command or menu head; nullptr when unknown
  QMenu* menu(int id) const;

 private:
  void add(const MenuItem& item);
  QMenu* parentMenu(int parent) const;
  QAction* makeAction(const MenuItem& item, QMenu& parent);

  QMenuBar& bar_;
  QWidget& window_;
  const MenuModel& model_;
  Trigger trigger_;
  std::map<int, QMenu*> menus_;
  std::map<int, QAction*> actions_;
};

// Text of a menu item for Qt: mnemonics as in the model; literal '&' of a file path doubled.
QString qtMenuText(const MenuItem& item);

}  // namespace quarvel
