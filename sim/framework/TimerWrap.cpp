// The time scale for code linked with -Wl,--wrap=ecore_timer_add (the application
// and the test executables): every ecore_timer_add call in their own objects lands
// here. Calls made inside the EFL libraries are not affected, nor is
// ecore_timer_loop_add, which the rest of sim/ uses with its own Scaled() values.
// Kept in its own file so that executables without the link option (tvctl) never
// pull it in and never need __real_ecore_timer_add.
#include <Ecore.h>

#include "TimeScale.h"

extern "C" {

Ecore_Timer* __real_ecore_timer_add(double in, Ecore_Task_Cb func, const void* data);

Ecore_Timer* __wrap_ecore_timer_add(double in, Ecore_Task_Cb func, const void* data) {
  return __real_ecore_timer_add(tvsim::Scaled(in), func, data);
}

}  // extern "C"
