#include "StateExport.h"

#include "Faults.h"
#include "RecorderConfig.h"
#include "Scenario.h"
#include "ServiceTable.h"
#include "SettingsTable.h"

namespace tvsim {

using nlohmann::json;

json ExportState(Store& store, bool asScenario) {
  json out = json::object();
  const TvMode main = ScreenMode(store, 0);
  out["tv_mode"] = {{"antenna", main.antennaMode}, {"service", main.serviceMode}};

  json screens = json::array();
  for (auto s = store.Prepare("SELECT screen, antenna, service FROM screens WHERE screen != 0 ORDER BY screen");
       s.Step();) {
    screens.push_back({{"screen", s.Int(0)}, {"antenna", s.Int(1)}, {"service", s.Int(2)}});
  }
  out["screens"] = screens;

  json names = json::array();
  for (auto s = store.Prepare("SELECT antenna, service, name FROM antenna_names ORDER BY antenna, service");
       s.Step();) {
    json name = {{"antenna", s.Int(0)}, {"name", s.Text(2)}};
    if (!s.IsNull(1)) name["service"] = s.Int(1);
    names.push_back(name);
  }
  out["antenna_names"] = names;

  json formats = json::object();
  for (auto s = store.Prepare("SELECT kind, format FROM number_formats ORDER BY kind"); s.Step();) {
    formats[std::to_string(s.Int(0))] = s.Text(1);
  }
  out["number_formats"] = formats;
  json modeFormats = json::array();
  for (auto s = store.Prepare("SELECT antenna, service, kind, format FROM mode_number_formats "
                              "ORDER BY antenna, service, kind");
       s.Step();) {
    json format = {{"antenna", s.Int(0)}, {"kind", s.Int(2)}, {"format", s.Text(3)}};
    if (!s.IsNull(1)) format["service"] = s.Int(1);
    modeFormats.push_back(format);
  }
  if (!modeFormats.empty()) out["mode_number_formats"] = modeFormats;

  json services = json::array();
  for (auto s = store.Prepare(
           "SELECT id, antenna, service, major, minor, kind, name, navigation, programme, current FROM services "
           "ORDER BY antenna, service, major, minor, id");
       s.Step();) {
    json service = {{"id", IdFromSql(s.Int(0))}, {"antenna", s.Int(1)}, {"service", s.Int(2)},
                    {"major", s.Int(3)},         {"name", s.Text(6)},   {"navigation", NavigationModes(s.Int(7))}};
    if (!s.IsNull(4)) service["minor"] = s.Int(4);
    if (!s.IsNull(5)) service["kind"] = s.Int(5);
    if (!s.IsNull(8)) service["programme"] = s.Text(8);
    if (s.Int(9) != 0) service["current"] = true;
    services.push_back(service);
  }
  out["services"] = services;

  json profiles = json::array();
  for (auto s = store.Prepare("SELECT data FROM profiles ORDER BY position"); s.Step();) {
    profiles.push_back(json::parse(s.Text(0)));
  }
  out["profiles"] = profiles;

  json settings = json::object();
  std::vector<std::string> keys;
  for (auto s = store.Prepare("SELECT key FROM settings ORDER BY key"); s.Step();) keys.push_back(s.Text(0));
  for (const std::string& key : keys) {
    if (auto value = ReadSettingFrom(store, key)) settings[key] = value->ToJson();
  }
  out["settings"] = settings;

  out["recordings"] = ReadRecordings(store);
  out["playback"] = {{"playing", ReadPlaying(store)}};
  const StopReport report = ReadStopReport(store);
  json stop = {{"delay_ms", report.delayMs}, {"event", report.event}, {"result", report.result}};
  if (report.never) stop["never"] = true;
  out["recorder"] = {{"stop_report", stop}};

  json faults = json::array();
  for (const Fault& fault : ListFaults(store)) {
    json entry = FaultToJson(fault);
    if (asScenario) {
      entry.erase("id");
      entry.erase("calls");
    }
    faults.push_back(entry);
  }
  out["faults"] = faults;
  return out;
}

}  // namespace tvsim
