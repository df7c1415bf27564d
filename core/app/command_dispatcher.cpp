#include "core/app/command_dispatcher.h"

#include "core/app/command_ids.h"
#include "core/app/session.h"

namespace quarvel {

CommandDispatcher::CommandDispatcher(Session& session) : session_(session) {
  registerAllCommands(*this);
}

void CommandDispatcher::on(int id, Handler handler) { handlers_[id] = std::move(handler); }

int CommandDispatcher::dispatch(int id) {
  if (auto it = handlers_.find(id); it != handlers_.end()) {
    it->second(session_);
    return 1;
  }
  const MenuItem* item = session_.menu().find(id);
  return (item != nullptr && item->kind == MenuItemKind::Command) ? 1 : 0;
}

}  // namespace quarvel
