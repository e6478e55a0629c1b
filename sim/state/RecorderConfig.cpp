#include "RecorderConfig.h"

#include <nlohmann/json.hpp>

#include <iterator>

#include "Environment.h"

namespace tvsim {

namespace {

int64_t ReadConfig(Store& store, const std::string& key, int64_t fallback) {
  auto s = store.Prepare("SELECT value FROM config WHERE key = ?");
  s.Bind(1, key);
  return s.Step() ? s.Int(0) : fallback;
}

void WriteConfig(Store& store, const std::string& key, int64_t value) {
  store.Prepare("INSERT OR REPLACE INTO config(key, value) VALUES(?,?)").Bind(1, key).Bind(2, value).Run();
}

}  // namespace

StopReport ReadStopReport(Store& store) {
  StopReport report;
  report.delayMs = ReadConfig(store, "recorder/stop_report/delay_ms", 0);
  report.event = static_cast<int32_t>(ReadConfig(store, "recorder/stop_report/event", 1));
  report.result = static_cast<int32_t>(ReadConfig(store, "recorder/stop_report/result", 1));
  report.never = ReadConfig(store, "recorder/stop_report/never", 0) != 0;
  return report;
}

void WriteStopReport(Store& store, const StopReport& report) {
  WriteConfig(store, "recorder/stop_report/delay_ms", report.delayMs);
  WriteConfig(store, "recorder/stop_report/event", report.event);
  WriteConfig(store, "recorder/stop_report/result", report.result);
  WriteConfig(store, "recorder/stop_report/never", report.never ? 1 : 0);
}

int64_t ReadPlaying(Store& store) { return ReadConfig(store, "playback/playing", 0); }

void WritePlaying(Store& store, int64_t playing) { WriteConfig(store, "playback/playing", playing); }

std::vector<uint64_t> ReadRecordings(Store& store) {
  std::vector<uint64_t> ids;
  for (auto s = store.Prepare("SELECT service_id FROM recordings ORDER BY position"); s.Step();) {
    ids.push_back(IdFromSql(s.Int(0)));
  }
  return ids;
}

bool AddRecording(Store& store, uint64_t serviceId) {
  auto s = store.Prepare("INSERT OR IGNORE INTO recordings(service_id) VALUES(?)");
  s.Bind(1, IdToSql(serviceId)).Run();
  auto changes = store.Prepare("SELECT changes()");
  changes.Step();
  return changes.Int(0) > 0;
}

bool RemoveRecording(Store& store, uint64_t serviceId) {
  store.Prepare("DELETE FROM recordings WHERE service_id = ?").Bind(1, IdToSql(serviceId)).Run();
  auto changes = store.Prepare("SELECT changes()");
  changes.Step();
  return changes.Int(0) > 0;
}

int64_t AddRecorderEvent(Store& store, const rec_result& result) {
  const nlohmann::json words = std::vector<int32_t>(std::begin(result.data), std::end(result.data));
  store.Prepare("INSERT INTO recorder_events(time, event, result, data) VALUES(?,?,?,?)")
      .Bind(1, NowText())
      .Bind(2, result.event)
      .Bind(3, result.result)
      .Bind(4, words.dump())
      .Run();
  auto id = store.Prepare("SELECT last_insert_rowid()");
  id.Step();
  return id.Int(0);
}

std::vector<RecorderEvent> ReadRecorderEventsAfter(Store& store, int64_t seq) {
  std::vector<RecorderEvent> events;
  auto s = store.Prepare("SELECT seq, event, result, data FROM recorder_events WHERE seq > ? ORDER BY seq");
  for (s.Bind(1, seq); s.Step();) {
    RecorderEvent event;
    event.seq = s.Int(0);
    event.result.event = static_cast<int32_t>(s.Int(1));
    event.result.result = static_cast<int32_t>(s.Int(2));
    const auto words = nlohmann::json::parse(s.Text(3), nullptr, false);
    for (size_t i = 0; words.is_array() && i < words.size() && i < 5; ++i) {
      if (words[i].is_number_integer()) event.result.data[i] = static_cast<int32_t>(words[i].get<int64_t>());
    }
    events.push_back(event);
  }
  return events;
}

int64_t LastRecorderEventSeq(Store& store) {
  // The counter, not the last row: rows go when the records are cleared.
  auto s = store.Prepare("SELECT seq FROM sqlite_sequence WHERE name = 'recorder_events'");
  return s.Step() ? s.Int(0) : 0;
}

}  // namespace tvsim
