#include "SettingsTable.h"

#include <charconv>
#include <map>

#include "Errors.h"
#include "Platform.h"
#include "TextCodec.h"

namespace tvsim {

using nlohmann::json;

json SettingValue::ToJson() const {
  switch (type) {
    case Type::Int:
      return number;
    case Type::Bool:
      return number != 0;
    case Type::String:
      return text;
  }
  return nullptr;
}

const char* TypeName(SettingValue::Type type) {
  switch (type) {
    case SettingValue::Type::Int:
      return "int";
    case SettingValue::Type::Bool:
      return "bool";
    case SettingValue::Type::String:
      return "string";
  }
  return "?";
}

namespace {

std::optional<SettingValue::Type> TypeFromName(const std::string& name) {
  if (name == "int") return SettingValue::Type::Int;
  if (name == "bool") return SettingValue::Type::Bool;
  if (name == "string") return SettingValue::Type::String;
  return std::nullopt;
}

}  // namespace

std::optional<SettingValue::Type> KnownSettingType(const std::string& key) {
  using T = SettingValue::Type;
  static const std::map<std::string, T> known = {
      {"system_settings/57", T::Int},
      {"com.velmora/featureconf/broadcasting.antenna_selection_util.service_mode_for_sa_atv", T::Bool},
      {"com.velmora/featureconf/pvr.pvr_support", T::Bool},
      {"system_info/285", T::Int},
      {"system_info/18", T::Int},
      {"system_info/238", T::Int},
      {"db/mls/mls_focus", T::Int},
      {"memory/mls/state", T::Int},
      {"db/menu/picture/pip/onoff", T::Int},
      {"db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType", T::Bool},
      {"db/menu/system/accessibility/focuszoom", T::Int},
      {"db/menu/system/language", T::String},
      {"kpi/filter_detail", T::Bool},
  };
  auto it = known.find(key);
  if (it == known.end()) return std::nullopt;
  return it->second;
}

SettingValue SettingFromJson(const json& value, const std::string& key, const std::string& pointer) {
  SettingValue setting;
  if (value.is_boolean()) {
    setting.type = SettingValue::Type::Bool;
    setting.number = value.get<bool>() ? 1 : 0;
  } else if (value.is_number_integer()) {
    setting.type = SettingValue::Type::Int;
    if (value.is_number_unsigned() ? value.get<uint64_t>() > INT32_MAX
                                   : (value.get<int64_t>() < INT32_MIN || value.get<int64_t>() > INT32_MAX)) {
      throw ScenarioError("", pointer, value.dump() + " is out of the 32-bit range of an int setting");
    }
    setting.number = value.get<int64_t>();
  } else if (value.is_string()) {
    setting.type = SettingValue::Type::String;
    setting.text = value.get<std::string>();
  } else {
    throw ScenarioError("", pointer, std::string("a setting is an integer, true/false or a string, not ") +
                                         value.type_name());
  }
  const auto known = KnownSettingType(key);
  if (known && *known != setting.type) {
    throw ScenarioError("", pointer, "\"" + key + "\" is a " + TypeName(*known) + " setting, not " +
                                         TypeName(setting.type));
  }
  return setting;
}

SettingValue SettingFromText(SettingValue::Type type, const std::string& key, const std::string& text) {
  SettingValue setting;
  setting.type = type;
  switch (type) {
    case SettingValue::Type::Int: {
      // Decimal digits with an optional minus, nothing around them.
      int64_t number = 0;
      const char* end = text.data() + text.size();
      const auto [stop, error] = std::from_chars(text.data(), end, number);
      if (text.empty() || error != std::errc() || stop != end || number < INT32_MIN || number > INT32_MAX) {
        throw UsageError("\"" + key + "\" is an int setting: \"" + text + "\" is not a 32-bit integer");
      }
      setting.number = number;
      break;
    }
    case SettingValue::Type::Bool:
      if (text == "true") {
        setting.number = 1;
      } else if (text == "false") {
        setting.number = 0;
      } else {
        throw UsageError("\"" + key + "\" is a bool setting: \"" + text + "\" is not true or false");
      }
      break;
    case SettingValue::Type::String:
      if (text.find('\0') != std::string::npos || !Utf8ToUtf16BigEndian(text, nullptr)) {
        throw UsageError("\"" + key + "\" is a string setting: the value is not UTF-8 text");
      }
      setting.text = text;
      break;
  }
  return setting;
}

std::optional<SettingValue> ReadSettingFrom(Store& store, const std::string& key) {
  auto select = store.Prepare("SELECT type, value FROM settings WHERE key = ?");
  select.Bind(1, key);
  if (!select.Step()) return std::nullopt;
  const auto type = TypeFromName(select.Text(0));
  if (!type) return std::nullopt;
  SettingValue value;
  value.type = *type;
  if (*type == SettingValue::Type::String) {
    value.text = select.Text(1);
  } else {
    value.number = select.Int(1);
  }
  select.Run();
  return value;
}

void WriteSetting(Store& store, const std::string& key, const SettingValue& value) {
  auto insert = store.Prepare("INSERT OR REPLACE INTO settings(key, type, value) VALUES(?,?,?)");
  insert.Bind(1, key).Bind(2, std::string(TypeName(value.type)));
  if (value.type == SettingValue::Type::String) {
    insert.Bind(3, value.text);
  } else {
    insert.Bind(3, value.number);
  }
  insert.Run();
}

std::optional<SettingValue> ReadSetting(const std::string& key) {
  try {
    Store* store = PlatformStore();
    if (store == nullptr) return std::nullopt;
    return ReadSettingFrom(*store, key);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace tvsim
