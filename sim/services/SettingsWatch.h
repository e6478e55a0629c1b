// Settings change notification on the Ecore main loop, for changes made by this
// process or by others (tvctl). A timer polls PRAGMA data_version, which moves
// only for other connections' commits, and compares the watched keys' values.
#pragma once

#include <functional>
#include <string>

namespace tvsim {

using SettingCallback = std::function<void(const std::string& key)>;

// Calls callback on the main loop after each change of key (a new value, or the
// key appearing or going away). Returns a watch id > 0, or 0 when Ecore is not
// running. A callback may unwatch itself or others while being notified.
int WatchSetting(const std::string& key, SettingCallback callback);
void UnwatchSetting(int watchId);

// A change committed on the platform's own connection: compare at the next tick.
void NoteLocalSettingsChange();

// How often the watches look for changes, in seconds.
constexpr double kSettingsPollSeconds = 0.1;

}  // namespace tvsim
