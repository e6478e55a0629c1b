#include "RecorderConfig.h"

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

}  // namespace tvsim
