// TVSIM_TIME_SCALE: one factor for every time-out the application sees, so that
// tests and demos need not wait for real 30-second time-outs (0.1 makes 30 s take 3 s).
#pragma once

namespace tvsim {

// The factor from TVSIM_TIME_SCALE, read once; 1.0 when unset or not a positive number.
double TimeScale();

// seconds multiplied by TimeScale().
double Scaled(double seconds);

}  // namespace tvsim
