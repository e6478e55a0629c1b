// A minimal application on the platform's framework, for tests that need a second
// process: it writes each lifecycle callback's name as a line on stdout, opens
// its window on the first launch request and, like the product, ends on pause.
#include <Elementary.h>

#include <cstdio>

#include "App.h"

namespace {

void Say(const char* what) {
  std::printf("%s\n", what);
  std::fflush(stdout);
}

bool Create(void*) {
  Say("create");
  return true;
}

void Control(app_control_h, void*) {
  Say("app_control");
  static Evas_Object* window = nullptr;
  if (window == nullptr) {
    window = elm_win_add(nullptr, "Tiny App", ELM_WIN_BASIC);
    elm_win_autodel_set(window, EINA_TRUE);
    evas_object_show(window);
  }
}

void Resume(void*) { Say("resume"); }

void Pause(void*) {
  Say("pause");
  ui_app_exit();
}

void Terminate(void*) { Say("terminate"); }

}  // namespace

int main(int argc, char** argv) {
  ui_app_lifecycle_callback_s callbacks = {Create, Terminate, Pause, Resume, Control};
  const int result = ui_app_main(argc, argv, &callbacks, nullptr);
  std::printf("result %d\n", result);
  return result;
}
