#include "Faults.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <set>

#include "Errors.h"
#include "JsonCheck.h"
#include "Ops.h"
#include "TextCodec.h"

namespace tvsim {

namespace jc = json_check;
using nlohmann::json;

namespace {

[[noreturn]] void Refuse(const std::string& pointer, const std::string& problem) {
  throw ScenarioError("", pointer, problem);
}

// The whole of text as a decimal number of type T in [min, max].
template <typename T>
bool Decimal(const std::string& text, T min, T max, T* value) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, *value);
  return !text.empty() && error == std::errc() && stop == end && *value >= min && *value <= max;
}

// "antenna/service" as the calls name a mode, with the ranges of a scenario's tv_mode.
bool ModeText(const std::string& text, std::string* canonical) {
  const size_t slash = text.find('/');
  int64_t antenna = 0, service = 0;
  if (slash == std::string::npos || !Decimal<int64_t>(text.substr(0, slash), -1, 2, &antenna) ||
      !Decimal<int64_t>(text.substr(slash + 1), -1, 255, &service)) {
    return false;
  }
  *canonical = std::to_string(antenna) + "/" + std::to_string(service);
  return true;
}

// Keys, event names: text without spaces or control characters.
bool Word(const std::string& text) {
  return !text.empty() && Utf8ToUtf16BigEndian(text, nullptr) &&
         std::none_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) <= ' '; });
}

// The target in the form the calls give theirs (numbers without leading zeros),
// or a refusal: a target that can never match makes a fault that never fires.
std::string Target(const OpInfo& op, const std::string& name, const json& value, const std::string& where) {
  const std::string kind = op.target;
  const bool numeric = kind == "screen" || kind == "service" || kind == "profile";
  std::string text;
  if (value.is_string()) {
    text = value.get<std::string>();
  } else if (value.is_number() && numeric) {
    text = value.dump();  // a fraction or an exponent is refused below
  } else {
    Refuse(where, std::string("a ") + kind + " target is " + (numeric ? "a number" : "text") + ", not " +
                      (value.is_number() ? "a number" : value.type_name()));
  }
  std::string canonical;
  if (kind == "screen") {
    int64_t screen = 0;
    if (Decimal<int64_t>(text, 0, 15, &screen)) return std::to_string(screen);
    if (name == "SetTvMode" && ModeText(text, &canonical)) return canonical;
    // The navigator asked for: the main one, or the one opened for a screen.
    if (name == "OpenNavigator" && text == "main") return text;
    if (name == "OpenNavigator" && text.rfind("screen:", 0) == 0 && Decimal<int64_t>(text.substr(7), 0, 15, &screen)) {
      return "screen:" + std::to_string(screen);
    }
    Refuse(where, "\"" + text + "\" is no screen 0..15" +
                      std::string(name == "SetTvMode"       ? " and no mode \"antenna/service\""
                                  : name == "OpenNavigator" ? ", \"main\" or \"screen:N\""
                                                            : ""));
  }
  if (kind == "mode") {
    if (ModeText(text, &canonical)) return canonical;
    Refuse(where, "\"" + text + "\" is no mode \"antenna/service\" (antenna -1..2, service mode -1..255)");
  }
  if (kind == "service") {
    uint64_t id = 0;
    if (Decimal<uint64_t>(text, 1, UINT64_MAX, &id)) return std::to_string(id);
    Refuse(where, "\"" + text + "\" is no service id 1..2^64-1");
  }
  if (kind == "profile") {
    int64_t id = 0;
    if (Decimal<int64_t>(text, INT32_MIN, INT32_MAX, &id)) return std::to_string(id);
    Refuse(where, "\"" + text + "\" is no profile id (a 32-bit number)");
  }
  if (kind == "key") {
    // System information and system settings are named by their number; other keys are paths.
    const char* family = name == "system_info_get_value_int"       ? "system_info/"
                         : name == "system_settings_get_value_int" ? "system_settings/"
                                                                   : nullptr;
    int64_t number = 0;
    if (family == nullptr && Word(text) && text.find('/') != std::string::npos) return text;
    if (family != nullptr && text.rfind(family, 0) == 0 &&
        Decimal<int64_t>(text.substr(std::strlen(family)), INT32_MIN, INT32_MAX, &number)) {
      return family + std::to_string(number);
    }
    Refuse(where, "\"" + text + "\" is no " +
                      (family ? std::string("key ") + family + "N" : "settings key (a path such as db/mls/mls_focus)"));
  }
  // An event name, as the KPI table spells them: SELECT_ANTENNA, SL_FILTER_A.
  auto isNameChar = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'; };
  auto isLetter = [](char c) { return c >= 'A' && c <= 'Z'; };
  if (std::all_of(text.begin(), text.end(), isNameChar) && std::any_of(text.begin(), text.end(), isLetter)) {
    return text;
  }
  Refuse(where, "\"" + text + "\" is no event name (capitals, digits and _)");
}

}  // namespace

Fault ParseFault(const json& value, const std::string& pointer) {
  jc::Object(value, pointer, {"op", "target", "nth", "result", "keep_outputs", "null", "no_table", "no_attribute"},
             {"op"});
  Fault fault;
  fault.op = jc::String(value["op"], jc::Child(pointer, "op"));
  const OpInfo* op = FindOp(fault.op);
  if (op == nullptr) throw ScenarioError("", jc::Child(pointer, "op"), "unknown operation \"" + fault.op + "\"");
  if (value.contains("target")) {
    const json& target = value["target"];
    const std::string where = jc::Child(pointer, "target");
    if (*op->target == '\0') throw ScenarioError("", where, fault.op + " takes no target");
    fault.target = Target(*op, fault.op, target, where);
  }
  if (value.contains("nth")) fault.nth = jc::Int(value["nth"], jc::Child(pointer, "nth"), 1, INT32_MAX);

  int effects = 0;
  if (value.contains("result")) {
    const std::string where = jc::Child(pointer, "result");
    if (!op->takesResult) throw ScenarioError("", where, fault.op + " takes no result fault");
    fault.result = jc::Int(value["result"], where, INT32_MIN, INT32_MAX);
    ++effects;
  }
  if (value.contains("null")) {
    const std::string where = jc::Child(pointer, "null");
    if (!op->takesNull) throw ScenarioError("", where, fault.op + " hands out no object");
    if (!jc::Bool(value["null"], where)) throw ScenarioError("", where, "\"null\" must be true when present");
    fault.null = true;
    ++effects;
  }
  if (value.contains("no_table")) {
    const std::string where = jc::Child(pointer, "no_table");
    if (!op->takesRecord) throw ScenarioError("", where, fault.op + " delivers no service record");
    if (!jc::Bool(value["no_table"], where)) throw ScenarioError("", where, "\"no_table\" must be true when present");
    fault.noTable = true;
    ++effects;
  }
  if (value.contains("no_attribute")) {
    const std::string where = jc::Child(pointer, "no_attribute");
    if (!op->takesRecord) throw ScenarioError("", where, fault.op + " delivers no service record");
    fault.noAttribute = jc::Int(value["no_attribute"], where, 0, INT32_MAX);
    ++effects;
  }
  if (value.contains("keep_outputs")) {
    const std::string where = jc::Child(pointer, "keep_outputs");
    if (!jc::Bool(value["keep_outputs"], where)) throw ScenarioError("", where, "\"keep_outputs\" must be true when present");
    if (!fault.result) throw ScenarioError("", where, "\"keep_outputs\" goes with \"result\"");
    fault.keepOutputs = true;
  }
  if (effects != 1) {
    throw ScenarioError("", pointer, "a fault needs exactly one effect: result, null, no_table or no_attribute");
  }
  return fault;
}

json FaultToJson(const Fault& fault) {
  json out = {{"id", fault.id}, {"op", fault.op}, {"calls", fault.calls}};
  if (fault.target) out["target"] = *fault.target;
  if (fault.nth) out["nth"] = *fault.nth;
  if (fault.result) out["result"] = *fault.result;
  if (fault.keepOutputs) out["keep_outputs"] = true;
  if (fault.null) out["null"] = true;
  if (fault.noTable) out["no_table"] = true;
  if (fault.noAttribute) out["no_attribute"] = *fault.noAttribute;
  return out;
}

int64_t InsertFault(Store& store, const Fault& fault) {
  store.Prepare("INSERT INTO faults(op, target, nth, result, is_null, no_table, no_attribute, keep_outputs) VALUES(?,?,?,?,?,?,?,?)")
      .Bind(1, fault.op)
      .BindOptional(2, fault.target)
      .BindOptional(3, fault.nth)
      .BindOptional(4, fault.result)
      .Bind(5, fault.null ? 1 : 0)
      .Bind(6, fault.noTable ? 1 : 0)
      .BindOptional(7, fault.noAttribute)
      .Bind(8, fault.keepOutputs ? 1 : 0)
      .Run();
  auto last = store.Prepare("SELECT last_insert_rowid()");
  last.Step();
  return last.Int(0);
}

namespace {

std::vector<Fault> Read(Store& store, const std::optional<std::string>& op) {
  auto select = op ? store.Prepare(
                         "SELECT id, op, target, nth, result, is_null, no_table, no_attribute, calls, keep_outputs FROM faults "
                         "WHERE op = ? ORDER BY id")
                   : store.Prepare(
                         "SELECT id, op, target, nth, result, is_null, no_table, no_attribute, calls, keep_outputs FROM faults "
                         "ORDER BY id");
  if (op) select.Bind(1, *op);
  std::vector<Fault> faults;
  while (select.Step()) {
    Fault fault;
    fault.id = select.Int(0);
    fault.op = select.Text(1);
    fault.target = select.OptionalText(2);
    fault.nth = select.OptionalInt(3);
    fault.result = select.OptionalInt(4);
    fault.null = select.Int(5) != 0;
    fault.noTable = select.Int(6) != 0;
    fault.noAttribute = select.OptionalInt(7);
    fault.calls = select.Int(8);
    fault.keepOutputs = select.Int(9) != 0;
    faults.push_back(fault);
  }
  return faults;
}

}  // namespace

std::vector<Fault> ListFaults(Store& store) { return Read(store, std::nullopt); }

namespace {

// True when op certainly has no fault: known from earlier in the same held read
// (one pass of the main loop; a write, a fault's own included, ends it).
bool NoFaultThisPass(Store& store, const std::string& op) {
  static uint64_t s_pass = 0;
  static std::set<std::string> s_ops;
  const uint64_t pass = store.HeldReadPass();
  if (pass == 0) return false;  // no held read: ask every time
  if (pass != s_pass) {
    s_ops.clear();
    for (auto s = store.Prepare("SELECT DISTINCT op FROM faults"); s.Step();) s_ops.insert(s.Text(0));
    s_pass = pass;
  }
  return s_ops.count(op) == 0;
}

}  // namespace

std::optional<Fault> TakeFault(Store& store, const std::string& op, const std::vector<std::string>& targets) {
  if (NoFaultThisPass(store, op)) return std::nullopt;
  // Most calls meet no fault at all: look before opening a write transaction.
  if (Read(store, op).empty()) return std::nullopt;
  // A TV that may only be read keeps no counts: its faults fire as for the
  // first matching call after they were set.
  if (store.ReadOnly()) {
    for (Fault& fault : Read(store, op)) {
      if (fault.target && std::find(targets.begin(), targets.end(), *fault.target) == targets.end()) continue;
      if (!fault.nth || *fault.nth == fault.calls + 1) return fault;
    }
    return std::nullopt;
  }
  Store::Transaction transaction(store);
  std::optional<Fault> fired;
  for (Fault& fault : Read(store, op)) {
    if (fault.target && std::find(targets.begin(), targets.end(), *fault.target) == targets.end()) continue;
    ++fault.calls;
    store.Prepare("UPDATE faults SET calls = ? WHERE id = ?").Bind(1, fault.calls).Bind(2, fault.id).Run();
    if (!fired && (!fault.nth || *fault.nth == fault.calls)) fired = fault;
  }
  transaction.Commit();
  return fired;
}

}  // namespace tvsim
