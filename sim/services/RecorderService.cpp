// The recorder service of the simulated TV. A stop request is answered later,
// on the Ecore main loop and never before rec_stop_recording returns, as the
// scenario's "recorder" member says (delay scaled by TVSIM_TIME_SCALE). Events
// sent from outside (tvctl recorder-event) are picked up by a poll timer that
// runs while a callback is registered, and delivered once per process.
#include <Ecore.h>

#include <algorithm>
#include <list>

#include "PortCall.h"
#include "RecorderConfig.h"
#include "Recorder.h"
#include "TimeScale.h"

namespace {

using nlohmann::json;
using tvsim::PortContext;

constexpr int kFailed = -1;
// How often a registered process looks for new recorder events (unscaled: a poll, not a delay).
constexpr double kEventPollSeconds = 0.1;

struct PendingReport {
  Ecore_Timer* timer;
  rec_result result;
};

struct RecorderState {
  rec_other_apps_cb callback = nullptr;
  void* data = nullptr;
  std::list<PendingReport> pending;
  bool hooked = false;
  Ecore_Timer* poll = nullptr;
  int64_t seenEvent = -1;   // events up to this seq are not ours; -1: not known yet
  int64_t dataVersion = -1;  // of the last look at recorder_events
};

RecorderState& State() {
  static auto* state = new RecorderState();
  return *state;
}

void CancelPending() {
  RecorderState& state = State();
  for (PendingReport& report : state.pending) ecore_timer_del(report.timer);
  state.pending.clear();
}

void StopPolling() {
  RecorderState& state = State();
  if (state.poll) ecore_timer_del(state.poll);
  state.poll = nullptr;
}

void Forget() {
  CancelPending();
  StopPolling();
  State().callback = nullptr;
  State().data = nullptr;
  State().seenEvent = -1;  // the next registration may be on another database
}

// Events sent before this moment are not for the callback being registered.
void TakeEventBaseline(tvsim::Store& store) {
  RecorderState& state = State();
  state.seenEvent = std::max(state.seenEvent, tvsim::LastRecorderEventSeq(store));
  state.dataVersion = store.DataVersion();
}

Eina_Bool PollEvents(void*) {
  RecorderState& state = State();
  Ecore_Timer* self = state.poll;
  try {
    tvsim::Store* store = tvsim::PlatformStore();
    if (store != nullptr && state.seenEvent < 0) {
      TakeEventBaseline(*store);
    } else if (store != nullptr && store->DataVersion() != state.dataVersion) {
      state.dataVersion = store->DataVersion();
      for (const tvsim::RecorderEvent& event : tvsim::ReadRecorderEventsAfter(*store, state.seenEvent)) {
        if (event.seq <= state.seenEvent) continue;  // a registration inside a callback skips the rest
        state.seenEvent = event.seq;                  // before the callback: each event once
        if (state.callback == nullptr) break;
        state.callback(event.result, state.data);
      }
    }
  } catch (const std::exception& e) {
    tvsim::ReportPortError("recorder events", e.what());
  }
  // The callback may have unregistered (which deleted this timer) or registered anew.
  if (state.poll != self) return ECORE_CALLBACK_CANCEL;
  if (state.callback == nullptr) {
    state.poll = nullptr;
    return ECORE_CALLBACK_CANCEL;
  }
  return ECORE_CALLBACK_RENEW;
}

void StartPolling(tvsim::Store& store) {
  RecorderState& state = State();
  TakeEventBaseline(store);
  if (state.poll == nullptr && tvsim::EcoreRunning()) {
    state.poll = ecore_timer_loop_add(kEventPollSeconds, PollEvents, nullptr);
  }
}

void EnsureHooked() {
  RecorderState& state = State();
  if (!state.hooked) {
    tvsim::AddPlatformResetHook(Forget);
    state.hooked = true;
  }
}

Eina_Bool DeliverReport(void* timer) {
  RecorderState& state = State();
  auto it = std::find_if(state.pending.begin(), state.pending.end(),
                         [timer](const PendingReport& p) { return p.timer == timer; });
  if (it == state.pending.end()) return ECORE_CALLBACK_CANCEL;
  const rec_result result = it->result;
  state.pending.erase(it);
  // The callback registered now gets it: one unregistered meanwhile hears nothing.
  if (state.callback) state.callback(result, state.data);
  return ECORE_CALLBACK_CANCEL;
}

void ScheduleReport(const tvsim::StopReport& config, uint64_t serviceId) {
  RecorderState& state = State();
  rec_result result{};
  result.event = config.event;
  result.result = config.result;
  result.data[0] = static_cast<int32_t>(serviceId & 0xFFFFFFFFu);
  result.data[1] = static_cast<int32_t>(serviceId >> 32);
  state.pending.push_back(PendingReport{nullptr, result});
  PendingReport& report = state.pending.back();
  // The timer's data is its own handle, known only after creation: pass a
  // placeholder and look the report up by handle when it fires.
  const double delay = tvsim::Scaled(static_cast<double>(config.delayMs) / 1000.0);
  report.timer = ecore_timer_loop_add(std::max(delay, 0.0), [](void* data) -> Eina_Bool {
    auto* self = static_cast<PendingReport*>(data);
    return DeliverReport(self->timer);
  }, &report);
  if (report.timer == nullptr) state.pending.pop_back();
}

}  // namespace

extern "C" {

int rec_service_init(void) {
  return tvsim::RunPort<int>("rec_service_init", json::object(), {}, 0, [&](PortContext&) {
    EnsureHooked();
    return 1;
  });
}

int rec_service_destroy(void) {
  return tvsim::RunPort<int>("rec_service_destroy", json::object(), {}, kFailed, [&](PortContext& c) {
    c.out["cancelled_reports"] = State().pending.size();
    Forget();
    return 0;
  });
}

int rec_register_to_other_apps_cb(rec_other_apps_cb callback, void* data) {
  return tvsim::RunPort<int>("rec_register_to_other_apps_cb", {{"callback", callback != nullptr}}, {}, kFailed,
                             [&](PortContext& c) {
                               if (callback == nullptr) return kFailed;
                               EnsureHooked();
                               State().callback = callback;
                               State().data = data;
                               StartPolling(c.store);
                               return 0;
                             });
}

int rec_unregister_to_other_apps_cb(rec_other_apps_cb callback) {
  return tvsim::RunPort<int>("rec_unregister_to_other_apps_cb", {{"callback", callback != nullptr}}, {}, kFailed,
                             [&](PortContext&) {
                               if (callback == nullptr || callback != State().callback) return kFailed;
                               State().callback = nullptr;
                               State().data = nullptr;
                               StopPolling();
                               return 0;
                             });
}

int rec_get_recording_service_id_list(uint64_t* ids, int size, int* count, int reserved) {
  json args = {{"size", size}, {"reserved", reserved}};
  return tvsim::RunPort<int>("rec_get_recording_service_id_list", args, {}, kFailed, [&](PortContext& c) {
    if (count == nullptr || size < 0 || (ids == nullptr && size > 0)) return kFailed;
    const auto running = tvsim::ReadRecordings(c.store);
    const size_t room = static_cast<size_t>(size) / sizeof(uint64_t);
    const size_t written = std::min(room, running.size());
    std::copy(running.begin(), running.begin() + static_cast<long>(written), ids);
    *count = static_cast<int>(running.size());
    c.out = {{"ids", running}, {"count", running.size()}, {"written", written}};
    return 0;
  });
}

int rec_stop_recording(uint64_t serviceId, int mode, const char* callerAppId) {
  json args = {{"service_id", serviceId}, {"mode", mode}, {"caller", callerAppId ? json(callerAppId) : json()}};
  return tvsim::RunPort<int>("rec_stop_recording", args, {std::to_string(serviceId)}, kFailed, [&](PortContext& c) {
    tvsim::Store::Transaction transaction(c.store);
    tvsim::RecordRecorderRequest(c.store, "stop_recording", serviceId,
                                 callerAppId ? std::optional<std::string>(callerAppId) : std::nullopt);
    const bool stopped = tvsim::RemoveRecording(c.store, serviceId);
    const tvsim::StopReport config = tvsim::ReadStopReport(c.store);
    transaction.Commit();
    if (!stopped) return kFailed;  // nothing recorded on that service
    const bool report = State().callback != nullptr && !config.never && tvsim::EcoreRunning();
    if (report) ScheduleReport(config, serviceId);
    c.out["report"] = report ? json{{"event", config.event}, {"result", config.result}, {"delay_ms", config.delayMs}}
                             : json(nullptr);
    return 0;
  });
}

int rec_is_playing_multimedia(int* playing) {
  return tvsim::RunPort<int>("rec_is_playing_multimedia", json::object(), {}, kFailed, [&](PortContext& c) {
    if (playing == nullptr) return kFailed;
    const int64_t value = tvsim::ReadPlaying(c.store);
    c.out["playing"] = value;
    *playing = static_cast<int>(value);
    return 0;
  });
}

int rec_stop_playing_sync(const char* callerAppId) {
  json args = {{"caller", callerAppId ? json(callerAppId) : json()}};
  return tvsim::RunPort<int>("rec_stop_playing_sync", args, {}, kFailed, [&](PortContext& c) {
    tvsim::Store::Transaction transaction(c.store);
    tvsim::RecordRecorderRequest(c.store, "stop_playing", std::nullopt,
                                 callerAppId ? std::optional<std::string>(callerAppId) : std::nullopt);
    tvsim::WritePlaying(c.store, 0);
    transaction.Commit();
    return 0;
  });
}

}  // extern "C"
