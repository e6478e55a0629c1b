// The control API of the simulated TV: what tvctl's verbs do, for tests too.
// It opens its own connection, so a running application (and this process's
// own port functions) see its changes as another connection's commits.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <vector>

#include "Store.h"

namespace tvsim {

class Control {
 public:
  // Throws StoreError when the database cannot be opened.
  explicit Control(const std::string& dbPath);

  // Replace the whole state (faults and records too) with a scenario; throws
  // ScenarioError and leaves the database as it was when refused.
  void Load(const nlohmann::json& scenario, const std::string& source = "<scenario>");
  void LoadFile(const std::string& path);

  // The whole state and everything recorded; with asScenario only the state, as
  // a scenario that Load takes back.
  nlohmann::json Show(bool asScenario = false);

  // Sets a setting the TV knows (or the platform defines), reading value as the
  // key's type; records the write. Throws UsageError for an unknown key or value.
  void Set(const std::string& key, const std::string& value);
  void Reset();  // an empty TV with empty records
  // Antenna -1..2, service mode -1..255 (as a scenario's tv_mode), screen 0..15;
  // throws UsageError for anything else.
  void Tune(int64_t antenna, int64_t service, int64_t screen = 0);

  int64_t AddFault(const nlohmann::json& fault);  // throws ScenarioError
  nlohmann::json ListFaults();
  void ClearFaults();
  void ClearFault(int64_t id);  // throws UsageError when there is no such fault

  void StartRecording(uint64_t serviceId);  // throws UsageError when already recording
  void StopRecording(uint64_t serviceId);   // throws UsageError when not recording
  void SetPlaying(int64_t playing);
  // Sends a recorder event (at most 5 further words) to the running applications'
  // recorder callbacks; returns its seq. Throws UsageError for more words.
  int64_t SendRecorderEvent(int32_t event, int32_t result, const std::vector<int32_t>& words = {});

  Store& GetStore() { return m_store; }

 private:
  Store m_store;
};

}  // namespace tvsim
