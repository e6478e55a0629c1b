// The recorder's part of the TV state: running recordings, multimedia playback,
// how the recorder answers a stop request (keys of the config table) and the
// recorder events sent to running applications (table recorder_events).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Recorder.h"
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

// An event for the applications' recorder callbacks. Its seq only grows over
// the database's life (clearing the records keeps the counter), so that a
// running application can tell new events from those it has seen.
struct RecorderEvent {
  int64_t seq = 0;
  rec_result result{};
};

int64_t AddRecorderEvent(Store& store, const rec_result& result);  // the new event's seq
std::vector<RecorderEvent> ReadRecorderEventsAfter(Store& store, int64_t seq);  // in seq order
int64_t LastRecorderEventSeq(Store& store);  // 0 before the first event

}  // namespace tvsim
