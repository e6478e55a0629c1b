// Helpers for tests that run the whole application flow: the sample TV with
// changes, the time scale, the shown popups, and a viewer that acts while the
// application's own main loop runs.
#pragma once

#include <Elementary.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

namespace tvtest {

// scenarios/sample.json with `patch` merged in (RFC 7386: null removes a member).
nlohmann::json SampleTv(const nlohmann::json& patch = nlohmann::json::object());

// Sets TVSIM_TIME_SCALE for the timers created from now on.
void SetTimeScale(const char* factor);

// The visible antenna popup (its content is the list's layout), or null.
Evas_Object* ShownList();
// The visible message box (its content is a box of label and buttons), or null.
Evas_Object* ShownBox();
// The list of an antenna popup, or null.
Evas_Object* GenlistOf(Evas_Object* popup);
// The focused row's text of the shown antenna popup; "" for none.
std::string FocusedRow();
// The row texts of the shown antenna popup.
std::vector<std::string> ShownRows();

// Steps run on the main loop while the application's main() runs its own loop,
// each once its condition holds (a step must not run a loop of its own). Past
// the deadline it ends the application with ui_app_exit().
class Viewer {
 public:
  struct Step {
    const char* name;
    std::function<bool()> ready;
    std::function<void()> act;
  };
  Viewer(std::vector<Step> steps, double seconds);
  ~Viewer();
  Viewer(const Viewer&) = delete;
  Viewer& operator=(const Viewer&) = delete;
  // The first step not taken, or "" when all were.
  std::string Waiting() const;

 private:
  static Eina_Bool m_Tick(void* data);
  std::vector<Step> m_steps;
  size_t m_next = 0;
  double m_deadline;
  bool m_bEnded = false;
  Ecore_Timer* m_pTimer;
};

}  // namespace tvtest
