// The application's popups in process on the buffer engine, against a fresh
// simulated TV: a scenario with changes, the shown popups, the viewer's keys
// and what the TV recorded. One fixture for every popup test.
#pragma once

#include <Elementary.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "TempTv.h"

namespace tvtest {

using nlohmann::json;

// scenarios/<name> with `patch` merged in (RFC 7386: null removes a member).
json Scenario(const char* name, const json& patch = json::object());
json SampleTv(const json& patch = json::object());

// Sets TVSIM_TIME_SCALE for the timers created from now on.
void SetTimeScale(const char* factor);

// The visible antenna popup (its content is the list's layout), or null.
Evas_Object* ShownList();
// The visible message box (its content is a box of label and buttons), or null.
Evas_Object* ShownBox();
// The list of the visible stop-recording popup, or null; `popup` receives the popup.
Evas_Object* ShownStopList(Evas_Object** popup = nullptr);
// The list of an antenna popup, or null.
Evas_Object* GenlistOf(Evas_Object* popup);
// The focused row's text of the shown antenna popup; "" for none.
std::string FocusedRow();
std::vector<std::string> ShownRows();

class PopupTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Loads the TV and shows the antenna list as the shell does, the window
  // focused; with a current row, true once the focus settled on it.
  bool Open(const json& scenario, bool currentRow = true);
  // The focused row's text once it is not empty (up to 2 s).
  std::string SettledFocus();
  void Press(const std::vector<const char*>& keys);
  // Open, then Down and Return: the pick of Cable on a TV tuned to Air.
  void PickCable(const json& scenario);

  json Tuning() const { return tv.Show()["tuning_changes"]; }
  json Kpi() const { return tv.Show()["kpi_events"]; }
  json Requests() const { return tv.Show()["recorder_requests"]; }
  // The service ids of the stop requests, in order.
  std::vector<uint64_t> Stopped() const;
  // True when the TV switched exactly once, to that mode.
  bool SwitchedTo(int antenna, int service) const;
  bool Exited() const;
  // Sends a recorder event and waits until the application's callback has seen it.
  void SendRecorderEvent(int event, int result);

  TempTv tv;
  Evas_Object* m_pWindow = nullptr;
};

}  // namespace tvtest
