// The one settings table of the simulated TV: settings-store keys as they are,
// system information as "system_info/N", system settings as "system_settings/N",
// feature keys as they are. Each key is typed int, bool or string.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>

#include "Store.h"

namespace tvsim {

struct SettingValue {
  enum class Type { Int, Bool, String };
  Type type = Type::Int;
  int64_t number = 0;  // Int and Bool (0 or 1)
  std::string text;    // String

  nlohmann::json ToJson() const;
  bool operator==(const SettingValue& other) const {
    return type == other.type && number == other.number && text == other.text;
  }
  bool operator!=(const SettingValue& other) const { return !(*this == other); }
};

const char* TypeName(SettingValue::Type type);

// The type of a key the platform defines (those the application reads, the
// language and the KPI filter detail), whether or not the TV holds it now.
std::optional<SettingValue::Type> KnownSettingType(const std::string& key);

// A scenario value: JSON integer (32-bit), true/false or a string. Throws ScenarioError.
SettingValue SettingFromJson(const nlohmann::json& value, const std::string& key, const std::string& pointer);
// A command-line value read as type. Throws UsageError.
SettingValue SettingFromText(SettingValue::Type type, const std::string& key, const std::string& text);

std::optional<SettingValue> ReadSettingFrom(Store& store, const std::string& key);
void WriteSetting(Store& store, const std::string& key, const SettingValue& value);

// Reads a setting through the in-process platform's database (for sim code such
// as the application framework); nullopt when absent or unreadable.
std::optional<SettingValue> ReadSetting(const std::string& key);

}  // namespace tvsim
