// The boundary of every port function: opens the platform's database, applies
// the fault that hits this call, runs the operation, records the call with its
// arguments, outputs and result, and lets no exception out.
#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "CallLog.h"
#include "Faults.h"
#include "Platform.h"
#include "Records.h"

namespace tvsim {

// One line on stderr for a failure inside the simulator (database error, bug).
void ReportPortError(const char* op, const char* what);

// What an operation's body gets: the database, the fault that hit (null, no_table
// or no_attribute effects; a result fault never reaches the body) and a place
// for the outputs worth recording.
struct PortContext {
  Store& store;
  const std::optional<Fault>& fault;
  nlohmann::json out;
};

template <typename R>
R FaultResult(int64_t value) {
  if constexpr (std::is_same_v<R, bool>) {
    return value != 0;
  } else if constexpr (std::is_same_v<R, std::string>) {
    return std::string();  // a string operation under a result fault answers nothing
  } else if constexpr (std::is_pointer_v<R>) {
    return nullptr;  // never reached: object operations take "null", not "result"
  } else {
    return static_cast<R>(value);
  }
}

template <typename R>
nlohmann::json ResultJson(const R& result) {
  if constexpr (std::is_pointer_v<R>) {
    return result ? nlohmann::json("object") : nlohmann::json(nullptr);
  } else {
    return result;
  }
}

// What the body of an operation that needs no TV state gets: only the outputs.
struct PureContext {
  nlohmann::json out;
};

// The boundary both wrappers share. kPure: the operation needs no TV state, so
// it still runs when the database cannot be opened, only unrecorded and without
// faults; any other operation fails then.
template <bool kPure, typename R, typename Body>
R RunPortCall(const char* op, const nlohmann::json& args, const std::vector<std::string>& targets, R failure,
              Body&& body) {
  try {
    Store* store = PlatformStore();
    if (store == nullptr && !kPure) return failure;
    if (store) store->HoldReadsForPass();
    const std::optional<Fault> fault = store ? TakeFault(*store, op, targets) : std::nullopt;
    auto context = [&] {
      if constexpr (kPure) {
        return PureContext{};
      } else {
        return PortContext{*store, fault, nullptr};
      }
    }();
    // A result fault answers for the call; with keep_outputs the call runs first.
    const bool answered = fault && fault->result;
    R result = (answered && !fault->keepOutputs) ? FaultResult<R>(*fault->result) : body(context);
    if (answered && fault->keepOutputs) result = FaultResult<R>(*fault->result);
    if (fault) context.out["fault"] = fault->id;
    if (store) AppendCall(*store, op, args, ResultJson(result), context.out);
    return result;
  } catch (const std::exception& e) {
    ReportPortError(op, e.what());
  } catch (...) {
    ReportPortError(op, "unknown exception");
  }
  return failure;
}

// Runs body(PortContext&) -> R as the port operation op. failure is returned when
// the database cannot be used or the body throws.
template <typename R, typename Body>
R RunPort(const char* op, const nlohmann::json& args, const std::vector<std::string>& targets, R failure,
          Body&& body) {
  return RunPortCall<false, R>(op, args, targets, failure, std::forward<Body>(body));
}

// For operations that need no TV state (text conversion, templates):
// body(nlohmann::json& out) -> R.
template <typename R, typename Body>
R RunPurePort(const char* op, const nlohmann::json& args, const std::vector<std::string>& targets, R failure,
              Body&& body) {
  return RunPortCall<true, R>(op, args, targets, failure, [&](PureContext& context) { return body(context.out); });
}

}  // namespace tvsim
