#include "gui/menu_binding.h"

#include "core/app/command_ids.h"

namespace quarvel {
namespace {

bool isRecentFile(int id) { return id >= cmd::kRecentFile1 && id <= cmd::kRecentFile4; }

}  // namespace

QString qtMenuText(const MenuItem& item) {
  QString text = QString::fromStdString(item.text);
  if (isRecentFile(item.id)) {
    text.replace("&", "&&");
    text = QString("&%1 %2").arg(item.id - cmd::kRecentFile1 + 1).arg(text);
  }
  return text;
}

MenuBinding::MenuBinding(QMenuBar& bar, QWidget& window, const MenuModel& model, Trigger trigger)
    : bar_(bar), window_(window), model_(model), trigger_(std::move(trigger)) {
  for (const MenuItem& item : model.items()) add(item);
  // Accelerators whose command sits in no menu (Ctrl+I interrupts a long computation).
  for (const Accelerator& acc : model.accelerators()) {
    if (actions_.count(acc.command) != 0) continue;
    auto* action = new QAction(&window_);
    action->setShortcut(QKeySequence(QString::fromStdString(acc.key)));
    action->setShortcutContext(Qt::ApplicationShortcut);
    const int id = acc.command;
    QObject::connect(action, &QAction::triggered, [this, id] { trigger_(id); });
    window_.addAction(action);
    actions_[id] = action;
  }
}

QMenu* MenuBinding::parentMenu(int parent) const {
  auto it = menus_.find(parent);
  return it == menus_.end() ? nullptr : it->second;
}

void MenuBinding::add(const MenuItem& item) {
  if (item.kind == MenuItemKind::Menu) {
    QMenu* parent = parentMenu(item.parent);
    QMenu* menu = parent != nullptr ? parent->addMenu(qtMenuText(item)) : bar_.addMenu(qtMenuText(item));
    menus_[item.id] = menu;
    actions_[item.id] = menu->menuAction();
    menu->menuAction()->setEnabled(item.enabled);
    return;
  }
  QMenu* parent = parentMenu(item.parent);
  if (parent == nullptr) return;
  if (item.kind == MenuItemKind::Separator) {
    parent->addSeparator();
    return;
  }
  actions_[item.id] = makeAction(item, *parent);
}

QAction* MenuBinding::makeAction(const MenuItem& item, QMenu& parent) {
  QAction* action = parent.addAction(qtMenuText(item));
  action->setEnabled(item.enabled);
  action->setCheckable(item.checkable);
  action->setChecked(item.checked);
  if (!item.accelerator.empty()) {
    action->setShortcut(QKeySequence(QString::fromStdString(item.accelerator)));
    // Accelerators work wherever the focus is in the frame, as a frame accelerator table does.
    action->setShortcutContext(Qt::ApplicationShortcut);
  }
  const int id = item.id;
  QObject::connect(action, &QAction::triggered, [this, id] {
    trigger_(id);
    // Qt flips a checkable action by itself; the model decides whether it stays checked.
    if (QAction* a = this->action(id); a != nullptr && a->isCheckable()) a->setChecked(model_.isChecked(id));
  });
  return action;
}

void MenuBinding::apply(const MenuItem& item) {
  QAction* a = action(item.id);
  if (a == nullptr) {
    add(item);
    return;
  }
  a->setText(qtMenuText(item));
  a->setEnabled(item.enabled);
  if (item.kind == MenuItemKind::Command) {
    a->setCheckable(item.checkable);
    a->setChecked(item.checked);
  }
}

QAction* MenuBinding::action(int id) const {
  auto it = actions_.find(id);
  return it == actions_.end() ? nullptr : it->second;
}

QMenu* MenuBinding::menu(int id) const {
  auto it = menus_.find(id);
  return it == menus_.end() ? nullptr : it->second;
}

}  // namespace quarvel
