#include "Records.h"

#include <unistd.h>

#include "Environment.h"

namespace tvsim {

using nlohmann::json;

namespace {

int64_t Pid() { return static_cast<int64_t>(getpid()); }

json ParseStored(const std::string& text) { return json::parse(text, nullptr, false); }

}  // namespace

void RecordTuning(Store& store, int screen, const TvMode& mode) {
  store.Prepare("INSERT INTO tuning_changes(time, pid, screen, antenna, service) VALUES(?,?,?,?,?)")
      .Bind(1, NowText())
      .Bind(2, Pid())
      .Bind(3, screen)
      .Bind(4, static_cast<int64_t>(mode.antennaMode))
      .Bind(5, static_cast<int64_t>(mode.serviceMode))
      .Run();
}

void RecordKpiEvent(Store& store, int status, const std::string& event, const std::string& code,
                    const std::string& desc) {
  store.Prepare("INSERT INTO kpi_events(time, pid, status, event, code, desc) VALUES(?,?,?,?,?,?)")
      .Bind(1, NowText())
      .Bind(2, Pid())
      .Bind(3, status)
      .Bind(4, event)
      .Bind(5, code)
      .Bind(6, desc)
      .Run();
}

void RecordRecorderRequest(Store& store, const std::string& op, std::optional<uint64_t> serviceId,
                           std::optional<std::string> caller) {
  store.Prepare("INSERT INTO recorder_requests(time, pid, op, service_id, caller) VALUES(?,?,?,?,?)")
      .Bind(1, NowText())
      .Bind(2, Pid())
      .Bind(3, op)
      .BindOptional(4, serviceId ? std::optional<int64_t>(IdToSql(*serviceId)) : std::nullopt)
      .BindOptional(5, caller)
      .Run();
}

void RecordSettingsWrite(Store& store, const std::string& key, const json& value) {
  store.Prepare("INSERT INTO settings_writes(time, pid, key, value) VALUES(?,?,?,?)")
      .Bind(1, NowText())
      .Bind(2, Pid())
      .Bind(3, key)
      .Bind(4, value.dump())
      .Run();
}

void AddRecordsToJson(Store& store, json& out) {
  json kpi = json::array();
  for (auto s = store.Prepare("SELECT seq, time, pid, status, event, code, desc FROM kpi_events ORDER BY seq");
       s.Step();) {
    kpi.push_back({{"seq", s.Int(0)}, {"time", s.Text(1)}, {"pid", s.Int(2)}, {"status", s.Int(3)},
                   {"event", s.Text(4)}, {"code", s.Text(5)}, {"desc", s.Text(6)}});
  }
  out["kpi_events"] = kpi;

  json tuning = json::array();
  for (auto s = store.Prepare("SELECT seq, time, pid, screen, antenna, service FROM tuning_changes ORDER BY seq");
       s.Step();) {
    tuning.push_back({{"seq", s.Int(0)}, {"time", s.Text(1)}, {"pid", s.Int(2)}, {"screen", s.Int(3)},
                      {"antenna", s.Int(4)}, {"service", s.Int(5)}});
  }
  out["tuning_changes"] = tuning;

  json requests = json::array();
  for (auto s = store.Prepare(
           "SELECT seq, time, pid, op, service_id, caller FROM recorder_requests ORDER BY seq");
       s.Step();) {
    json request = {{"seq", s.Int(0)}, {"time", s.Text(1)}, {"pid", s.Int(2)}, {"op", s.Text(3)}};
    if (!s.IsNull(4)) request["service_id"] = IdFromSql(s.Int(4));
    if (!s.IsNull(5)) request["caller"] = s.Text(5);
    requests.push_back(request);
  }
  out["recorder_requests"] = requests;

  json writes = json::array();
  for (auto s = store.Prepare("SELECT seq, time, pid, key, value FROM settings_writes ORDER BY seq"); s.Step();) {
    writes.push_back({{"seq", s.Int(0)}, {"time", s.Text(1)}, {"pid", s.Int(2)}, {"key", s.Text(3)},
                      {"value", ParseStored(s.Text(4))}});
  }
  out["settings_writes"] = writes;

  json calls = json::array();
  for (auto s = store.Prepare("SELECT seq, time, pid, op, args, result FROM calls ORDER BY seq"); s.Step();) {
    json call = {{"seq", s.Int(0)}, {"time", s.Text(1)}, {"pid", s.Int(2)}, {"op", s.Text(3)}};
    json stored = ParseStored(s.Text(4));
    call["args"] = stored.value("args", json::object());
    if (stored.contains("out")) call["out"] = stored["out"];
    call["result"] = ParseStored(s.Text(5));
    calls.push_back(call);
  }
  out["calls"] = calls;

  json events = json::array();
  for (auto s = store.Prepare("SELECT seq, time, event, result, data FROM recorder_events ORDER BY seq"); s.Step();) {
    events.push_back({{"seq", s.Int(0)}, {"time", s.Text(1)}, {"event", s.Int(2)}, {"result", s.Int(3)},
                      {"data", ParseStored(s.Text(4))}});
  }
  out["recorder_events"] = events;
}

void ClearRecords(Store& store) {
  store.Exec(
      "DELETE FROM kpi_events; DELETE FROM tuning_changes; DELETE FROM recorder_requests; "
      "DELETE FROM settings_writes; DELETE FROM calls; DELETE FROM recorder_events; "
      "DELETE FROM sqlite_sequence WHERE name IN ('kpi_events', 'tuning_changes', 'recorder_requests', "
      "'settings_writes', 'calls')");
  // recorder_events keeps its counter: running applications know the events
  // they have seen by seq.
}

}  // namespace tvsim
