// Every command id, from a menu, an accelerator, a script or the command line, reaches the
// one CommandDispatcher, which calls the operation that owns it.
#pragma once

#include <functional>
#include <unordered_map>

namespace quarvel {

class Session;

class CommandDispatcher {
 public:
  using Handler = std::function<void(Session&)>;

  // Registers the handlers of every subsystem.
  explicit CommandDispatcher(Session& session);

  // Installs (or replaces) the handler of `id`.
  void on(int id, Handler handler);

  // Runs the command. Returns 1 when the id is a command of the program (commands whose
  // operation does not exist yet are accepted and do nothing) and 0 for an unknown id, which
  // changes nothing.
  int dispatch(int id);

  bool hasHandler(int id) const { return handlers_.count(id) != 0; }

 private:
  Session& session_;
  std::unordered_map<int, Handler> handlers_;
};

// Handlers of the application shell itself: Settings, Plot, Window, Undo, recent files,
// interrupt and the window-level commands.
void registerAppCommands(CommandDispatcher& dispatcher);
void registerFileCommands(CommandDispatcher& dispatcher);

// Installs every subsystem's handlers; defined in command_registry.cpp.
void registerAllCommands(CommandDispatcher& dispatcher);

}  // namespace quarvel
