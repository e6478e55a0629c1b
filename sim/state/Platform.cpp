#include "Platform.h"

#include <Ecore.h>
#include <sys/stat.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "Environment.h"

namespace tvsim {

namespace {

struct State {
  std::unique_ptr<Store> store;
  std::string lastError;
  std::vector<std::function<void()>> hooks;       // ReopenPlatform's
  std::vector<std::function<void()>> closeHooks;  // before any close of the connection
  dev_t device = 0;  // the open file's identity
  ino_t inode = 0;
  bool gone = false;  // the open file was deleted: no new empty TV in its place
};

State& Get() {
  static State* state = new State();  // never destroyed: port calls may come during static destruction
  return *state;
}

void CloseStore(State& state) {
  for (auto& hook : state.closeHooks) hook();
  state.store.reset();
}

void Report(State& state, const std::string& message) {
  if (state.lastError != message) std::fprintf(stderr, "tvsim: %s\n", message.c_str());
  state.lastError = message;
}

}  // namespace

// The TV's file may be deleted or replaced (tvctl load into a new file, a test,
// a person) while the application runs: every call looks at the file's identity,
// so that nothing is ever read from or written to a file that is no longer the TV.
Store* PlatformStore() {
  State& state = Get();
  struct stat file;
  if (state.store) {
    if (stat(state.store->Path().c_str(), &file) != 0) {
      Report(state, state.store->Path() + ": the TV's database was deleted; the TV answers nothing until it is back");
      state.gone = true;
      CloseStore(state);
      return nullptr;
    }
    if (file.st_dev == state.device && file.st_ino == state.inode) return state.store.get();
    CloseStore(state);  // replaced: open the new one
  } else if (state.gone && stat(DatabasePath().c_str(), &file) != 0) {
    return nullptr;
  }
  try {
    state.store = std::make_unique<Store>(DatabasePath());
    state.lastError.clear();
    state.gone = false;
    if (stat(state.store->Path().c_str(), &file) == 0) {
      state.device = file.st_dev;
      state.inode = file.st_ino;
    }
  } catch (const std::exception& e) {
    Report(state, e.what());
    return nullptr;
  }
  return state.store.get();
}

void ReopenPlatform() {
  State& state = Get();
  for (auto& hook : state.hooks) hook();
  CloseStore(state);
  state.lastError.clear();
  state.gone = false;
}

void AddPlatformResetHook(std::function<void()> hook) { Get().hooks.push_back(std::move(hook)); }

void AddConnectionCloseHook(std::function<void()> hook) { Get().closeHooks.push_back(std::move(hook)); }

bool EcoreRunning() {
  // Ecore has no query for its init count: take a reference and see what is left
  // after giving it back. Only a process without Ecore pays for a full cycle.
  ecore_init();
  return ecore_shutdown() > 0;
}

}  // namespace tvsim
