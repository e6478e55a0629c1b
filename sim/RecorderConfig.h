// The recorder's part of the TV state: running recordings, multimedia playback
// and how the recorder answers a stop request. Keys of the config table.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Store.h"

namespace tvsim {

struct StopReport {
  int64_t delayMs = 0;
  int32_t event = 1;
  int32_t result = 1;
  bool never = false;  // the report never comes
};

StopReport ReadStopReport(Store& store);
void WriteStopReport(Store& store, const StopReport& report);

int64_t ReadPlaying(Store& store);
void WritePlaying(Store& store, int64_t playing);

std::vector<uint64_t> ReadRecordings(Store& store);  // in the order they started
bool AddRecording(Store& store, uint64_t serviceId);     // false when already running
bool RemoveRecording(Store& store, uint64_t serviceId);  // false when not running

}  // namespace tvsim
