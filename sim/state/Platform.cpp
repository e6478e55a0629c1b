#include "Platform.h"

#include <Ecore.h>

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
  std::vector<std::function<void()>> hooks;
};

State& Get() {
  static State* state = new State();  // never destroyed: port calls may come during static destruction
  return *state;
}

}  // namespace

Store* PlatformStore() {
  State& state = Get();
  if (!state.store) {
    try {
      state.store = std::make_unique<Store>(DatabasePath());
      state.lastError.clear();
    } catch (const std::exception& e) {
      if (state.lastError != e.what()) std::fprintf(stderr, "tvsim: %s\n", e.what());
      state.lastError = e.what();
      return nullptr;
    }
  }
  return state.store.get();
}

void ReopenPlatform() {
  State& state = Get();
  for (auto& hook : state.hooks) hook();
  state.store.reset();
  state.lastError.clear();
}

void AddPlatformResetHook(std::function<void()> hook) { Get().hooks.push_back(std::move(hook)); }

bool EcoreRunning() {
  // Ecore has no query for its init count: take a reference and see what is left
  // after giving it back. Only a process without Ecore pays for a full cycle.
  ecore_init();
  return ecore_shutdown() > 0;
}

}  // namespace tvsim
