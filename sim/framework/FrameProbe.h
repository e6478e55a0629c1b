// A frame probe for benchmarks run from outside the process. With
// TVSIM_FRAME_PROBE=FILE in the environment, every frame a probed window draws
// appends one line to FILE, and so does every key that reaches the process:
//
//   frame <CLOCK_MONOTONIC ns> <row> <shown> <text>
//   key <CLOCK_MONOTONIC ns> <key name>
//
// <row> is the 1-based index of the focused row of the focused list (0: none);
// <shown> is 1 when that row is on screen in a window that has the focus;
// <text>, the rest of the line (maybe empty), is the focused row's main text or
// the focused button's label, as plain text on one line.
// Without the variable nothing is hooked and nothing is written.
#pragma once

#include <Elementary.h>

namespace tvsim {

// Hooks the probe to a window's canvas; twice for one window is harmless.
void AttachFrameProbe(Evas_Object* window);

}  // namespace tvsim
