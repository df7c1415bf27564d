// The frame shared by every operation that changes pattern data: show the dialog (unless a
// script runs), keep the undo copy only once the user confirmed, do the work, refresh the view
// (unless a script runs). Written once here so that no operation can get the order wrong.
#pragma once

#include <functional>

namespace quarvel {

class Session;

struct Operation {
  // Shows the dialog and stores its values in the session's settings. Returns false on Cancel.
  // Not called while a script runs; may be empty for operations without a dialog.
  std::function<bool(Session&)> askUser;
  // Optional: false when the confirmed values make the operation void. Then nothing happens,
  // not even the undo copy.
  std::function<bool(Session&)> hasEffect;
  // The work itself, on the session's store.
  std::function<void(Session&)> apply;
};

// Returns true when the operation was applied.
bool runOperation(Session& session, const Operation& operation);

}  // namespace quarvel
