#include "SettingsWatch.h"

#include <Ecore.h>

#include <list>
#include <optional>
#include <vector>

#include "Platform.h"
#include "PortCall.h"
#include "SettingsTable.h"

namespace tvsim {

namespace {

struct Watch {
  int id;
  std::string key;
  SettingCallback callback;
  std::optional<SettingValue> last;
  bool alive;
};

struct Watches {
  std::list<Watch> list;  // stable addresses while callbacks run
  Ecore_Timer* timer = nullptr;
  int nextId = 1;
  int64_t dataVersion = -1;
  bool localChange = false;
  bool hooked = false;
};

Watches& Get() {
  static Watches* watches = new Watches();
  return *watches;
}

void Prune(Watches& watches) { watches.list.remove_if([](const Watch& w) { return !w.alive; }); }

bool AnyAlive(const Watches& watches) {
  for (const Watch& w : watches.list) {
    if (w.alive) return true;
  }
  return false;
}

void StopTimer(Watches& watches) {
  if (watches.timer) ecore_timer_del(watches.timer);
  watches.timer = nullptr;
}

Eina_Bool OnTick(void*) {
  Watches& watches = Get();
  try {
    Store* store = PlatformStore();
    if (store != nullptr) {
      const int64_t version = store->DataVersion();
      if (version != watches.dataVersion || watches.localChange) {
        watches.dataVersion = version;
        watches.localChange = false;
        std::vector<int> changed;
        for (Watch& w : watches.list) {
          if (!w.alive) continue;
          const auto now = ReadSettingFrom(*store, w.key);
          if (now != w.last) {
            w.last = now;
            changed.push_back(w.id);
          }
        }
        for (int id : changed) {
          for (Watch& w : watches.list) {
            // Looked up anew each time: an earlier callback may have unwatched this one.
            if (w.id == id && w.alive) {
              SettingCallback callback = w.callback;
              callback(w.key);
              break;
            }
          }
        }
      }
    }
  } catch (const std::exception& e) {
    ReportPortError("settings watch", e.what());
  }
  Prune(watches);
  if (!AnyAlive(watches)) {
    watches.timer = nullptr;
    return ECORE_CALLBACK_CANCEL;
  }
  return ECORE_CALLBACK_RENEW;
}

void Reset() {
  Watches& watches = Get();
  StopTimer(watches);
  for (Watch& w : watches.list) w.alive = false;
  Prune(watches);
  watches.dataVersion = -1;
  watches.localChange = false;
}

}  // namespace

int WatchSetting(const std::string& key, SettingCallback callback) {
  Watches& watches = Get();
  if (!watches.hooked) {
    AddPlatformResetHook(Reset);
    watches.hooked = true;
  }
  if (!EcoreRunning()) return 0;
  std::optional<SettingValue> current;
  if (Store* store = PlatformStore()) {
    current = ReadSettingFrom(*store, key);
    if (watches.dataVersion < 0) watches.dataVersion = store->DataVersion();
  }
  const int id = watches.nextId++;
  watches.list.push_back(Watch{id, key, std::move(callback), current, true});
  if (watches.timer == nullptr) watches.timer = ecore_timer_loop_add(kSettingsPollSeconds, OnTick, nullptr);
  return id;
}

void UnwatchSetting(int watchId) {
  for (Watch& w : Get().list) {
    if (w.id == watchId) w.alive = false;
  }
}

void NoteLocalSettingsChange() { Get().localChange = true; }

}  // namespace tvsim
