// Test hooks of the application framework (the port functions are in port/App.h).
#pragma once

namespace tvsim {

// How many times ui_app_exit() was called since the last reset. Outside
// ui_app_main (in tests), ui_app_exit() only counts and quits a running main loop.
int ExitRequests();
void ResetExitRequests();

}  // namespace tvsim
