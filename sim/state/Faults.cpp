#include "Faults.h"

#include <algorithm>

#include "Errors.h"
#include "JsonCheck.h"
#include "Ops.h"

namespace tvsim {

namespace jc = json_check;
using nlohmann::json;

Fault ParseFault(const json& value, const std::string& pointer) {
  jc::Object(value, pointer, {"op", "target", "nth", "result", "null", "no_table", "no_attribute"}, {"op"});
  Fault fault;
  fault.op = jc::String(value["op"], jc::Child(pointer, "op"));
  const OpInfo* op = FindOp(fault.op);
  if (op == nullptr) throw ScenarioError("", jc::Child(pointer, "op"), "unknown operation \"" + fault.op + "\"");
  if (value.contains("target")) {
    const json& target = value["target"];
    const std::string where = jc::Child(pointer, "target");
    if (*op->target == '\0') throw ScenarioError("", where, fault.op + " takes no target");
    if (target.is_number_integer()) {
      fault.target = target.dump();
    } else {
      fault.target = jc::String(target, where);
      if (fault.target->empty()) throw ScenarioError("", where, "empty target");
    }
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
  if (fault.null) out["null"] = true;
  if (fault.noTable) out["no_table"] = true;
  if (fault.noAttribute) out["no_attribute"] = *fault.noAttribute;
  return out;
}

int64_t InsertFault(Store& store, const Fault& fault) {
  store.Prepare("INSERT INTO faults(op, target, nth, result, is_null, no_table, no_attribute) VALUES(?,?,?,?,?,?,?)")
      .Bind(1, fault.op)
      .BindOptional(2, fault.target)
      .BindOptional(3, fault.nth)
      .BindOptional(4, fault.result)
      .Bind(5, fault.null ? 1 : 0)
      .Bind(6, fault.noTable ? 1 : 0)
      .BindOptional(7, fault.noAttribute)
      .Run();
  auto last = store.Prepare("SELECT last_insert_rowid()");
  last.Step();
  return last.Int(0);
}

namespace {

std::vector<Fault> Read(Store& store, const std::optional<std::string>& op) {
  auto select = op ? store.Prepare(
                         "SELECT id, op, target, nth, result, is_null, no_table, no_attribute, calls FROM faults "
                         "WHERE op = ? ORDER BY id")
                   : store.Prepare(
                         "SELECT id, op, target, nth, result, is_null, no_table, no_attribute, calls FROM faults "
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
    faults.push_back(fault);
  }
  return faults;
}

}  // namespace

std::vector<Fault> ListFaults(Store& store) { return Read(store, std::nullopt); }

std::optional<Fault> TakeFault(Store& store, const std::string& op, const std::vector<std::string>& targets) {
  // Most calls meet no fault at all: look before opening a write transaction.
  if (Read(store, op).empty()) return std::nullopt;
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
