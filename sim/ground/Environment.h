// Where the simulated TV keeps its files, and the time stamps of its records.
#pragma once

#include <string>

namespace tvsim {

// TVSIM_DB, else $XDG_STATE_HOME/tvsim/tv.db, else ~/.local/state/tvsim/tv.db.
std::string DatabasePath();
// TVSIM_LOG, else $XDG_STATE_HOME/tvsim/tv.log, else ~/.local/state/tvsim/tv.log.
std::string LogPath();

// UTC wall-clock time with milliseconds: "2026-11-23T08:45:40.123Z".
std::string NowText();

}  // namespace tvsim
