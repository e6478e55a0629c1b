#include "Scenario.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "Errors.h"
#include "JsonCheck.h"
#include "TextCodec.h"

namespace tvsim {

namespace jc = json_check;
using nlohmann::json;

namespace {

constexpr int64_t kMaxServiceMode = 255;
constexpr int64_t kMaxScreen = 15;
constexpr int64_t kMaxRangeCount = 5000000;
constexpr int64_t kMaxDelayMs = 3600000;

[[noreturn]] void Refuse(const std::string& pointer, const std::string& problem) {
  throw ScenarioError("", pointer, problem);
}

std::string Utf8(const json& value, const std::string& pointer) {
  std::string text = jc::String(value, pointer);
  if (!Utf8ToUtf16BigEndian(text, nullptr)) Refuse(pointer, "not valid UTF-8");
  return text;
}

int32_t Int32(const json& value, const std::string& pointer) {
  return static_cast<int32_t>(jc::Int(value, pointer, INT32_MIN, INT32_MAX));
}

TvMode Mode(const json& value, const std::string& pointer, int64_t minAntenna) {
  jc::Object(value, pointer, {"antenna", "service"}, {"antenna", "service"});
  const auto antenna = jc::Int(value["antenna"], jc::Child(pointer, "antenna"), minAntenna, 2);
  const auto service = jc::Int(value["service"], jc::Child(pointer, "service"), minAntenna, kMaxServiceMode);
  return TvMode(static_cast<AntennaMode>(antenna), static_cast<ServiceMode>(service));
}

int64_t Navigation(const json& value, const std::string& pointer) {
  jc::Array(value, pointer);
  int64_t mask = 0;
  for (size_t i = 0; i < value.size(); ++i) {
    mask |= int64_t{1} << jc::Int(value[i], jc::Child(pointer, i), 0, kMaxNavigationMode);
  }
  return mask;
}

std::optional<std::string> Programme(const json& value, const std::string& pointer) {
  if (value.is_null()) return std::nullopt;
  return Utf8(value, pointer);
}

ServiceRow ParseService(const json& s, const std::string& p) {
  jc::Object(s, p, {"id", "antenna", "service", "major", "minor", "kind", "name", "navigation", "programme", "current"},
             {"id", "antenna", "service", "major", "name"});
  ServiceRow row;
  row.id = jc::Id(s["id"], jc::Child(p, "id"));
  row.antenna = static_cast<int>(jc::Int(s["antenna"], jc::Child(p, "antenna"), 0, 2));
  row.service = static_cast<int>(jc::Int(s["service"], jc::Child(p, "service"), 0, kMaxServiceMode));
  row.major = jc::Int(s["major"], jc::Child(p, "major"), -1, 65535);
  if (s.contains("minor")) row.minor = jc::Int(s["minor"], jc::Child(p, "minor"), 0, 65535);
  if (s.contains("kind")) row.kind = Int32(s["kind"], jc::Child(p, "kind"));
  row.name = Utf8(s["name"], jc::Child(p, "name"));
  row.navigation = s.contains("navigation") ? Navigation(s["navigation"], jc::Child(p, "navigation")) : 2;
  if (s.contains("programme")) row.programme = Programme(s["programme"], jc::Child(p, "programme"));
  if (s.contains("current")) row.current = jc::Bool(s["current"], jc::Child(p, "current"));
  return row;
}

ServiceRange ParseRange(const json& r, const std::string& p) {
  jc::Object(r, p,
             {"antenna", "service", "first_id", "count", "first_major", "minor", "kind", "name", "navigation",
              "programme"},
             {"antenna", "service", "first_id", "count"});
  ServiceRange range;
  range.antenna = static_cast<int>(jc::Int(r["antenna"], jc::Child(p, "antenna"), 0, 2));
  range.service = static_cast<int>(jc::Int(r["service"], jc::Child(p, "service"), 0, kMaxServiceMode));
  range.firstId = jc::Id(r["first_id"], jc::Child(p, "first_id"));
  range.count = jc::Int(r["count"], jc::Child(p, "count"), 1, kMaxRangeCount);
  if (range.firstId - 1 > UINT64_MAX - static_cast<uint64_t>(range.count)) {
    Refuse(jc::Child(p, "count"), "the ids run past 2^64-1");
  }
  if (r.contains("first_major")) range.firstMajor = jc::Int(r["first_major"], jc::Child(p, "first_major"), 0, 65535);
  if (range.firstMajor + range.count - 1 > 65535) {
    Refuse(jc::Child(p, "count"), "channel numbers would run past 65535");
  }
  if (r.contains("minor")) range.minor = jc::Int(r["minor"], jc::Child(p, "minor"), 0, 65535);
  if (r.contains("kind")) range.kind = Int32(r["kind"], jc::Child(p, "kind"));
  if (r.contains("name")) range.name = Utf8(r["name"], jc::Child(p, "name"));
  if (r.contains("navigation")) range.navigation = Navigation(r["navigation"], jc::Child(p, "navigation"));
  if (r.contains("programme")) range.programme = Programme(r["programme"], jc::Child(p, "programme"));
  return range;
}

json ParseProfile(const json& v, const std::string& p) {
  static const std::initializer_list<const char*> kFields = {
      "enabled", "profile_id", "operator_name", "operator_code", "antenna_modes", "tv_mode", "network_id",
      "satellite_id", "visible", "priority", "country", "language", "logo_path", "regional", "description"};
  jc::Object(v, p, kFields, kFields);
  for (const char* flag : {"enabled", "visible", "regional"}) jc::Bool(v[flag], jc::Child(p, flag));
  for (const char* number : {"profile_id", "network_id", "satellite_id", "priority"}) {
    Int32(v[number], jc::Child(p, number));
  }
  for (const char* text : {"operator_name", "operator_code", "country", "language", "logo_path", "description"}) {
    Utf8(v[text], jc::Child(p, text));
  }
  const std::string modes = jc::Child(p, "antenna_modes");
  jc::Array(v["antenna_modes"], modes);
  for (size_t i = 0; i < v["antenna_modes"].size(); ++i) jc::Int(v["antenna_modes"][i], jc::Child(modes, i), -1, 2);
  Mode(v["tv_mode"], jc::Child(p, "tv_mode"), 0);
  return v;
}

void ParseRecorder(const json& v, const std::string& p, StopReport& report) {
  jc::Object(v, p, {"stop_report"});
  if (!v.contains("stop_report")) return;
  const json& s = v["stop_report"];
  const std::string q = jc::Child(p, "stop_report");
  jc::Object(s, q, {"delay_ms", "event", "result", "never"});
  if (s.contains("delay_ms")) report.delayMs = jc::Int(s["delay_ms"], jc::Child(q, "delay_ms"), 0, kMaxDelayMs);
  if (s.contains("event")) report.event = Int32(s["event"], jc::Child(q, "event"));
  if (s.contains("result")) report.result = Int32(s["result"], jc::Child(q, "result"));
  if (s.contains("never")) report.never = jc::Bool(s["never"], jc::Child(q, "never"));
}

// Service ids are unique over services and ranges alike: compare as intervals.
void CheckUniqueIds(const Scenario& scenario) {
  struct Span {
    uint64_t first, last;
    std::string pointer;
  };
  std::vector<Span> spans;
  for (size_t i = 0; i < scenario.services.size(); ++i) {
    spans.push_back({scenario.services[i].id, scenario.services[i].id, jc::Child(jc::Child("", "services"), i)});
  }
  for (size_t i = 0; i < scenario.ranges.size(); ++i) {
    const auto& r = scenario.ranges[i];
    spans.push_back({r.firstId, r.firstId + static_cast<uint64_t>(r.count) - 1,
                     jc::Child(jc::Child("", "service_ranges"), i)});
  }
  std::stable_sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) { return a.first < b.first; });
  for (size_t i = 1; i < spans.size(); ++i) {
    if (spans[i].first <= spans[i - 1].last) {
      const std::string later = std::max(spans[i].pointer, spans[i - 1].pointer);
      const std::string earlier = std::min(spans[i].pointer, spans[i - 1].pointer);
      Refuse(later, "duplicate service id " + std::to_string(spans[i].first) + " (also at " + earlier + ")");
    }
  }
}

}  // namespace

ServiceRow ServiceRange::Row(int64_t index) const {
  ServiceRow row;
  row.id = firstId + static_cast<uint64_t>(index);
  row.antenna = antenna;
  row.service = service;
  row.major = firstMajor + index;
  row.minor = minor;
  row.kind = kind;
  auto fill = [&](std::string text) {
    for (const auto& [key, value] : {std::pair<std::string, std::string>{"{n}", std::to_string(index + 1)},
                                     {"{major}", std::to_string(row.major)}}) {
      for (size_t pos = text.find(key); pos != std::string::npos; pos = text.find(key, pos + value.size())) {
        text.replace(pos, key.size(), value);
      }
    }
    return text;
  };
  row.name = fill(name);
  row.navigation = navigation;
  if (programme) row.programme = fill(*programme);
  return row;
}

json NavigationModes(int64_t mask) {
  json modes = json::array();
  for (int mode = 0; mode <= kMaxNavigationMode; ++mode) {
    if (mask & (int64_t{1} << mode)) modes.push_back(mode);
  }
  return modes;
}

Scenario ParseScenario(const json& d) {
  jc::Object(d, "",
             {"tv_mode", "screens", "antenna_names", "number_formats", "mode_number_formats", "services",
              "service_ranges", "profiles", "settings", "recordings", "playback", "recorder", "faults"});
  Scenario scenario;
  if (d.contains("tv_mode")) {
    scenario.tvMode = Mode(d["tv_mode"], "/tv_mode", -1);
    scenario.hasTvMode = true;
  }
  auto each = [&](const char* member, auto&& parse) {
    if (!d.contains(member)) return;
    const std::string p = jc::Child("", member);
    jc::Array(d[member], p);
    for (size_t i = 0; i < d[member].size(); ++i) parse(d[member][i], jc::Child(p, i));
  };
  std::set<int64_t> screens;
  each("screens", [&](const json& v, const std::string& p) {
    jc::Object(v, p, {"screen", "antenna", "service"}, {"screen", "antenna", "service"});
    const int64_t screen = jc::Int(v["screen"], jc::Child(p, "screen"), 1, kMaxScreen);
    if (!screens.insert(screen).second) Refuse(jc::Child(p, "screen"), "screen " + std::to_string(screen) + " twice");
    scenario.screens.emplace_back(static_cast<int>(screen),
                                  Mode(json{{"antenna", v["antenna"]}, {"service", v["service"]}}, p, -1));
  });
  std::set<std::pair<int, int>> named;
  each("antenna_names", [&](const json& v, const std::string& p) {
    jc::Object(v, p, {"antenna", "service", "name"}, {"antenna", "name"});
    AntennaName name;
    name.antenna = static_cast<int>(jc::Int(v["antenna"], jc::Child(p, "antenna"), 0, 2));
    if (v.contains("service")) {
      name.service = static_cast<int>(jc::Int(v["service"], jc::Child(p, "service"), 0, kMaxServiceMode));
    }
    name.name = Utf8(v["name"], jc::Child(p, "name"));
    if (!named.insert({name.antenna, name.service.value_or(-1)}).second) Refuse(p, "this antenna is named twice");
    scenario.antennaNames.push_back(name);
  });
  if (d.contains("number_formats")) {
    const json& formats = d["number_formats"];
    if (!formats.is_object()) Refuse("/number_formats", "expected an object, found " + std::string(formats.type_name()));
    for (const auto& item : formats.items()) {
      const std::string p = jc::Child("/number_formats", item.key());
      char* end = nullptr;
      const long long kind = std::strtoll(item.key().c_str(), &end, 10);
      if (item.key().empty() || *end != '\0' || kind < INT32_MIN || kind > INT32_MAX) {
        Refuse(p, "a number format is keyed by a number kind (an integer)");
      }
      scenario.numberFormats[kind] = Utf8(item.value(), p);
    }
  }
  std::set<std::tuple<int, int, int64_t>> formatted;
  each("mode_number_formats", [&](const json& v, const std::string& p) {
    jc::Object(v, p, {"antenna", "service", "kind", "format"}, {"antenna", "kind", "format"});
    ModeNumberFormat format;
    format.antenna = static_cast<int>(jc::Int(v["antenna"], jc::Child(p, "antenna"), 0, 2));
    if (v.contains("service")) {
      format.service = static_cast<int>(jc::Int(v["service"], jc::Child(p, "service"), 0, kMaxServiceMode));
    }
    format.kind = jc::Int(v["kind"], jc::Child(p, "kind"), INT32_MIN, INT32_MAX);
    format.format = Utf8(v["format"], jc::Child(p, "format"));
    if (!formatted.insert({format.antenna, format.service.value_or(-1), format.kind}).second) {
      Refuse(p, "a second format for this mode and number kind");
    }
    scenario.modeNumberFormats.push_back(format);
  });
  std::map<std::pair<int, int>, std::string> currents;
  each("services", [&](const json& v, const std::string& p) {
    scenario.services.push_back(ParseService(v, p));
    const ServiceRow& row = scenario.services.back();
    if (row.current && !currents.emplace(std::make_pair(row.antenna, row.service), p).second) {
      Refuse(jc::Child(p, "current"), "a second current service in mode " + std::to_string(row.antenna) + "/" +
                                          std::to_string(row.service));
    }
  });
  each("service_ranges", [&](const json& v, const std::string& p) { scenario.ranges.push_back(ParseRange(v, p)); });
  CheckUniqueIds(scenario);
  std::set<int32_t> profileIds;
  each("profiles", [&](const json& v, const std::string& p) {
    scenario.profiles.push_back(ParseProfile(v, p));
    if (!profileIds.insert(v["profile_id"].get<int32_t>()).second) {
      Refuse(jc::Child(p, "profile_id"), "profile id " + v["profile_id"].dump() + " twice");
    }
  });
  if (d.contains("settings")) {
    const json& settings = d["settings"];
    if (!settings.is_object()) Refuse("/settings", "expected an object, found " + std::string(settings.type_name()));
    for (const auto& item : settings.items()) {
      const std::string p = jc::Child("/settings", item.key());
      if (item.key().empty()) Refuse(p, "empty settings key");
      scenario.settings.emplace_back(item.key(), SettingFromJson(item.value(), item.key(), p));
    }
  }
  std::set<uint64_t> recording;
  each("recordings", [&](const json& v, const std::string& p) {
    const uint64_t id = jc::Id(v, p);
    if (!recording.insert(id).second) Refuse(p, "service " + std::to_string(id) + " is recorded twice");
    scenario.recordings.push_back(id);
  });
  if (d.contains("playback")) {
    jc::Object(d["playback"], "/playback", {"playing"});
    if (d["playback"].contains("playing")) {
      scenario.playing = jc::Int(d["playback"]["playing"], "/playback/playing", INT32_MIN, INT32_MAX);
    }
  }
  if (d.contains("recorder")) ParseRecorder(d["recorder"], "/recorder", scenario.stopReport);
  each("faults", [&](const json& v, const std::string& p) { scenario.faults.push_back(ParseFault(v, p)); });
  return scenario;
}

}  // namespace tvsim
