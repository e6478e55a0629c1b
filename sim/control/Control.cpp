#include "Control.h"

#include <algorithm>
#include <iterator>

#include "CallLog.h"
#include "Errors.h"
#include "Faults.h"
#include "RecorderConfig.h"
#include "Records.h"
#include "ScenarioLoader.h"
#include "ServiceTable.h"
#include "SettingsTable.h"
#include "StateExport.h"

namespace tvsim {

using nlohmann::json;

Control::Control(const std::string& dbPath) : m_store(dbPath) {}

void Control::Load(const json& scenario, const std::string& source) { LoadScenario(m_store, scenario, source); }

void Control::LoadFile(const std::string& path) { LoadScenarioFile(m_store, path); }

json Control::Show(bool asScenario) {
  FlushCalls();  // this process's own port calls, still in memory
  // One read transaction: a consistent picture while the application writes.
  m_store.Exec("BEGIN");
  try {
    json out = ExportState(m_store, asScenario);
    if (!asScenario) AddRecordsToJson(m_store, out);
    m_store.Exec("COMMIT");
    return out;
  } catch (...) {
    m_store.Exec("ROLLBACK");
    throw;
  }
}

void Control::Set(const std::string& key, const std::string& value) {
  Store::Transaction transaction(m_store);
  const auto stored = ReadSettingFrom(m_store, key);
  const auto type = stored ? std::optional<SettingValue::Type>(stored->type) : KnownSettingType(key);
  if (!type) throw UsageError("unknown settings key \"" + key + "\"");
  const SettingValue setting = SettingFromText(*type, key, value);
  WriteSetting(m_store, key, setting);
  RecordSettingsWrite(m_store, key, setting.ToJson());
  transaction.Commit();
}

void Control::Reset() {
  Store::Transaction transaction(m_store);
  ClearTv(m_store);
  transaction.Commit();
}

void Control::Tune(int64_t antenna, int64_t service, int64_t screen) {
  if (antenna < -1 || antenna > 2) throw UsageError("antenna " + std::to_string(antenna) + " is not -1..2");
  if (service < -1 || service > 255) throw UsageError("service mode " + std::to_string(service) + " is not -1..255");
  if (screen < 0 || screen > 15) throw UsageError("screen " + std::to_string(screen) + " is not 0..15");
  Store::Transaction transaction(m_store);
  SetScreenMode(m_store, screen, TvMode(static_cast<AntennaMode>(antenna), static_cast<ServiceMode>(service)));
  transaction.Commit();
}

int64_t Control::AddFault(const json& fault) {
  Fault parsed;
  try {
    parsed = ParseFault(fault, "");
  } catch (const ScenarioError& e) {
    throw e.InFile("fault");
  }
  Store::Transaction transaction(m_store);
  const int64_t id = InsertFault(m_store, parsed);
  transaction.Commit();
  return id;
}

json Control::ListFaults() {
  json faults = json::array();
  for (const Fault& fault : tvsim::ListFaults(m_store)) faults.push_back(FaultToJson(fault));
  return faults;
}

void Control::ClearFaults() {
  Store::Transaction transaction(m_store);
  m_store.Exec("DELETE FROM faults");
  transaction.Commit();
}

void Control::ClearFault(int64_t id) {
  Store::Transaction transaction(m_store);
  m_store.Prepare("DELETE FROM faults WHERE id = ?").Bind(1, id).Run();
  auto changes = m_store.Prepare("SELECT changes()");
  changes.Step();
  if (changes.Int(0) == 0) throw UsageError("no fault with id " + std::to_string(id));
  transaction.Commit();
}

void Control::StartRecording(uint64_t serviceId) {
  if (serviceId == 0) throw UsageError("0 is not a service id");
  Store::Transaction transaction(m_store);
  if (!AddRecording(m_store, serviceId)) {
    throw UsageError("service " + std::to_string(serviceId) + " is already being recorded");
  }
  transaction.Commit();
}

void Control::StopRecording(uint64_t serviceId) {
  Store::Transaction transaction(m_store);
  if (!RemoveRecording(m_store, serviceId)) {
    throw UsageError("service " + std::to_string(serviceId) + " is not being recorded");
  }
  transaction.Commit();
}

void Control::SetPlaying(int64_t playing) {
  Store::Transaction transaction(m_store);
  WritePlaying(m_store, playing);
  transaction.Commit();
}

int64_t Control::SendRecorderEvent(int32_t event, int32_t result, const std::vector<int32_t>& words) {
  rec_result sent{};
  if (words.size() > std::size(sent.data)) {
    throw UsageError("a recorder event has at most " + std::to_string(std::size(sent.data)) + " further words");
  }
  sent.event = event;
  sent.result = result;
  std::copy(words.begin(), words.end(), sent.data);
  Store::Transaction transaction(m_store);
  const int64_t seq = AddRecorderEvent(m_store, sent);
  transaction.Commit();
  return seq;
}

}  // namespace tvsim
