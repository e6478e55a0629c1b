// What the application did to the TV, with the time of each act: tuning-mode
// changes, KPI events, recorder requests and settings writes (the call log of
// every port call is CallLog.h). `tvctl show` and tests read them back.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>

#include "Store.h"
#include "TvMode.h"

namespace tvsim {

void RecordTuning(Store& store, int screen, const TvMode& mode);
void RecordKpiEvent(Store& store, int status, const std::string& event, const std::string& code,
                    const std::string& desc);
void RecordRecorderRequest(Store& store, const std::string& op, std::optional<uint64_t> serviceId,
                           std::optional<std::string> caller);
void RecordSettingsWrite(Store& store, const std::string& key, const nlohmann::json& value);

// The members "kpi_events", "tuning_changes", "recorder_requests", "settings_writes", "calls" and
// "recorder_events" (sent by tvctl recorder-event).
void AddRecordsToJson(Store& store, nlohmann::json& out);
void ClearRecords(Store& store);  // inside the caller's transaction

}  // namespace tvsim
