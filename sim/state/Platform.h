// The in-process platform: the database connection behind the port functions,
// opened on first use from TVSIM_DB (or the default path), and the reset that
// lets tests point the process at another database.
#pragma once

#include <functional>

#include "Store.h"

namespace tvsim {

// The platform's connection, or null (after one line on stderr) when the
// database cannot be opened; the next call tries again. A database file
// replaced meanwhile is opened anew; a deleted one answers null until a file is
// back at its path (no empty TV is made in its place).
Store* PlatformStore();

// Closes the database and forgets in-process state (recorder registration and
// pending reports, settings watches); the next port call opens TVSIM_DB anew.
void ReopenPlatform();

// Called by ReopenPlatform, in registration order, before the database closes.
void AddPlatformResetHook(std::function<void()> hook);
// Called before the connection closes for any reason (ReopenPlatform, a file
// replaced or deleted): for what holds on to the connection.
void AddConnectionCloseHook(std::function<void()> hook);

// True when Ecore is initialised, so that timers can be added for the main loop.
bool EcoreRunning();

}  // namespace tvsim
