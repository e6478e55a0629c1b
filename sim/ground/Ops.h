// Every port operation the simulated TV answers, with the fault effects each
// one can take and what its fault target names.
#pragma once

#include <string>
#include <vector>

namespace tvsim {

struct OpInfo {
  const char* name;    // as in the call log and in faults: "OpenNavigator", "vconf_get_int", ...
  const char* target;  // what a fault target names: "screen", "mode", "service", "key", "profile", "event" or ""
  bool takesResult;    // "result": N replaces the operation's result
  bool takesNull;      // "null": true hands out a null object
  bool takesRecord;    // "no_table" / "no_attribute" strip the delivered service record
};

const std::vector<OpInfo>& AllOps();
// The operation, or null for an unknown name.
const OpInfo* FindOp(const std::string& name);

}  // namespace tvsim
