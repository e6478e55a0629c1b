// The settings store (vconf), system information and system settings of the
// simulated TV, all read from the settings table at the moment of the call.
#include <cstring>
#include <list>
#include <string>

#include "PortCall.h"
#include "Settings.h"
#include "SettingsTable.h"
#include "SettingsWatch.h"

struct _keynode_t {
  std::string name;
};

namespace {

using tvsim::PortContext;
using tvsim::SettingValue;

constexpr int kFailed = -1;

nlohmann::json KeyArg(const char* key) { return {{"key", key ? nlohmann::json(key) : nlohmann::json(nullptr)}}; }

// Reads key as type into the output through store; the output stays untouched on failure.
template <typename Out>
int ReadTyped(PortContext& context, const std::string& key, SettingValue::Type type, Out* value) {
  const auto setting = tvsim::ReadSettingFrom(context.store, key);
  if (!setting || setting->type != type) return kFailed;
  *value = static_cast<Out>(setting->number);
  context.out["value"] = setting->ToJson();
  return 0;
}

struct Registration {
  std::string key;
  vconf_callback_fn callback;
  void* data;
  int watchId;
};

std::list<Registration>& Registrations() {
  static auto* registrations = new std::list<Registration>();
  return *registrations;
}

}  // namespace

extern "C" {

int vconf_get_int(const char* key, int* value) {
  return tvsim::RunPort<int>("vconf_get_int", KeyArg(key), {key ? key : ""}, kFailed, [&](PortContext& c) {
    if (key == nullptr || value == nullptr) return kFailed;
    return ReadTyped(c, key, SettingValue::Type::Int, value);
  });
}

int vconf_get_bool(const char* key, int* value) {
  return tvsim::RunPort<int>("vconf_get_bool", KeyArg(key), {key ? key : ""}, kFailed, [&](PortContext& c) {
    if (key == nullptr || value == nullptr) return kFailed;
    return ReadTyped(c, key, SettingValue::Type::Bool, value);
  });
}

int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* user_data) {
  return tvsim::RunPort<int>("vconf_notify_key_changed", KeyArg(key), {key ? key : ""}, kFailed,
                             [&](PortContext&) {
                               if (key == nullptr || callback == nullptr) return kFailed;
                               static const bool hooked = (tvsim::AddPlatformResetHook([] { Registrations().clear(); }),
                                                           true);
                               (void)hooked;
                               const std::string name = key;
                               const int id = tvsim::WatchSetting(name, [callback, user_data](const std::string& k) {
                                 _keynode_t node{k};
                                 callback(&node, user_data);
                               });
                               if (id == 0) return kFailed;
                               Registrations().push_back(Registration{name, callback, user_data, id});
                               return 0;
                             });
}

int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback) {
  return tvsim::RunPort<int>("vconf_ignore_key_changed", KeyArg(key), {key ? key : ""}, kFailed,
                             [&](PortContext&) {
                               if (key == nullptr || callback == nullptr) return kFailed;
                               int removed = 0;
                               auto& registrations = Registrations();
                               for (auto it = registrations.begin(); it != registrations.end();) {
                                 if (it->key == key && it->callback == callback) {
                                   tvsim::UnwatchSetting(it->watchId);
                                   it = registrations.erase(it);
                                   ++removed;
                                 } else {
                                   ++it;
                                 }
                               }
                               return removed > 0 ? 0 : kFailed;
                             });
}

const char* vconf_keynode_get_name(keynode_t* node) { return node ? node->name.c_str() : nullptr; }

int system_info_get_value_int(system_info_key_e key, int* value) {
  const std::string name = "system_info/" + std::to_string(static_cast<int>(key));
  return tvsim::RunPort<int>("system_info_get_value_int", {{"key", static_cast<int>(key)}}, {name}, kFailed,
                             [&](PortContext& c) {
                               if (value == nullptr) return kFailed;
                               return ReadTyped(c, name, SettingValue::Type::Int, value);
                             });
}

int system_info_get_custom_bool(const char* key, bool* value) {
  return tvsim::RunPort<int>("system_info_get_custom_bool", KeyArg(key), {key ? key : ""}, kFailed,
                             [&](PortContext& c) {
                               if (key == nullptr || value == nullptr) return kFailed;
                               return ReadTyped(c, key, SettingValue::Type::Bool, value);
                             });
}

int system_settings_get_value_int(system_settings_key_e key, int* value) {
  const std::string name = "system_settings/" + std::to_string(static_cast<int>(key));
  return tvsim::RunPort<int>("system_settings_get_value_int", {{"key", static_cast<int>(key)}}, {name}, kFailed,
                             [&](PortContext& c) {
                               if (value == nullptr) return kFailed;
                               return ReadTyped(c, name, SettingValue::Type::Int, value);
                             });
}

}  // extern "C"
