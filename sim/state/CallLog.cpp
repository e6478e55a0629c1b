#include "CallLog.h"

#include <Ecore.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "Environment.h"
#include "Platform.h"

namespace tvsim {

using nlohmann::json;

namespace {

// Past this many rows the log is written at once, idle or not: a loop that never
// idles must not grow it without end.
const size_t kMaxPending = 512;

struct Row {
  std::string time;
  std::string op;
  json args;
  json result;
};

struct Pending {
  Store* store = nullptr;  // the connection the rows belong to
  std::vector<Row> rows;
  Ecore_Idler* idler = nullptr;
  bool reported = false;  // a failed write is reported once per process
  bool hooked = false;
};

Pending& State() {
  static auto* pending = new Pending();  // never destroyed: flushed at exit
  return *pending;
}

std::string Dump(const json& value) { return value.dump(-1, ' ', false, json::error_handler_t::replace); }

void Write(Store& store, const std::vector<Row>& rows) {
  Pending& state = State();
  try {
    Store::Transaction transaction(store);
    const int64_t pid = static_cast<int64_t>(getpid());
    for (const Row& row : rows) {
      store.Prepare("INSERT INTO calls(time, pid, op, args, result) VALUES(?,?,?,?,?)")
          .Bind(1, row.time)
          .Bind(2, pid)
          .Bind(3, row.op)
          .Bind(4, Dump(row.args))
          .Bind(5, Dump(row.result))
          .Run();
    }
    transaction.Commit();
  } catch (const std::exception& e) {
    if (!state.reported) {
      std::fprintf(stderr, "tvsim: the call log in %s cannot be written (%s); port calls go on unrecorded\n",
                   store.Path().c_str(), e.what());
    }
    state.reported = true;
  }
}

Eina_Bool OnIdle(void*) {
  State().idler = nullptr;
  FlushCalls();
  return ECORE_CALLBACK_CANCEL;
}

bool InMainLoop() { return ecore_main_loop_nested_get() > 0; }

}  // namespace

void AppendCall(Store& store, const std::string& op, const json& args, const json& result, const json& out) {
  Pending& state = State();
  if (!state.hooked) {
    state.hooked = true;
    std::atexit(FlushCalls);
    AddConnectionCloseHook([] {
      FlushCalls();
      State().store = nullptr;
    });
  }
  if (state.store != &store) FlushCalls();
  state.store = &store;
  Row row{NowText(), op, {{"args", args}}, result};
  if (!out.is_null()) row.args["out"] = out;
  state.rows.push_back(std::move(row));
  if (!InMainLoop() || state.rows.size() >= kMaxPending) {
    FlushCalls();
  } else if (state.idler == nullptr) {
    state.idler = ecore_idler_add(OnIdle, nullptr);
  }
}

void FlushCalls() {
  Pending& state = State();
  // After the toolkit shut down, its idlers are gone with it.
  if (state.idler != nullptr && EcoreRunning()) ecore_idler_del(state.idler);
  state.idler = nullptr;
  if (state.rows.empty() || state.store == nullptr) return;
  std::vector<Row> rows;
  rows.swap(state.rows);
  Write(*state.store, rows);
}

}  // namespace tvsim
