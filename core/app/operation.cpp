#include "core/app/operation.h"

#include "core/app/session.h"

namespace quarvel {

bool runOperation(Session& session, const Operation& operation) {
  const bool interactive = !session.flags.scriptRunning;
  if (interactive && operation.askUser && !operation.askUser(session)) return false;
  if (operation.hasEffect && !operation.hasEffect(session)) return false;
  if (interactive) session.keepUndoCopy();
  operation.apply(session);
  if (interactive) session.refreshView();
  return true;
}

}  // namespace quarvel
