// TVSIM_TIME_SCALE: one factor for every time-out the application sees, so that
// tests and demos need not wait for real 30-second time-outs (0.1 makes 30 s take 3 s).
//
// How the factor reaches the timers: the application and the test executables are
// linked with -Wl,--wrap=ecore_timer_add, and TimerWrap.cpp scales the interval of
// every ecore_timer_add call made from their own code. The rest of sim/ must
// therefore never call ecore_timer_add: it creates its timers with
// ecore_timer_loop_add and scales the duration itself with Scaled(), so that no
// time-out is scaled twice (or, in tvctl, which is not wrapped, not at all).
#pragma once

namespace tvsim {

// The largest factor taken: 30 s become 8 h 20 min, the longest recorder delay 42 days.
constexpr double kMaxTimeScale = 1000.0;

// The factor from TVSIM_TIME_SCALE, read on first use; 1.0 when unset, and 1.0
// with a warning on stderr when it is not a number above 0 and at most kMaxTimeScale.
double TimeScale();

// seconds multiplied by TimeScale().
double Scaled(double seconds);

// Test hook: reads TVSIM_TIME_SCALE again, so a test can change the factor after
// the first TimeScale() call of the process.
void ReloadTimeScaleForTesting();

}  // namespace tvsim
