// The call log: a row per port call of this process (operation, arguments,
// outputs, result), read back by `tvctl show` and the tests. While the main loop
// runs, rows wait in memory and are written in one transaction once the loop
// goes idle, so that the port calls of one callback cost one commit, after the
// frame they lead to is drawn; outside a running loop (tvctl, tests calling
// port functions directly) each row is written at once. A write that fails is
// reported once on stderr and never fails the port call it records.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

#include "Store.h"

namespace tvsim {

void AppendCall(Store& store, const std::string& op, const nlohmann::json& args, const nlohmann::json& result,
                const nlohmann::json& out);

// Writes the rows still in memory to the platform's database. Readers in this
// process call it first (Control::Show); the framework calls it at exit.
void FlushCalls();

}  // namespace tvsim
