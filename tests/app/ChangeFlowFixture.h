// Shared by the tests of the change flow: a simulated TV, the antenna popup on
// the buffer engine, a pick of Cable, and the TV's record of what happened.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "AntennaSelectionPopup.h"
#include "AppFramework.h"
#include "Control.h"
#include "TempTv.h"
#include "TimeScale.h"
#include "UiDriver.h"
#include "Util.h"

namespace flowtest {

using nlohmann::json;

constexpr const char* kCaller = "org.norix.epg";

// scenarios/<name> with `patch` merged in.
inline json Scenario(const char* name, const json& patch = json::object()) {
  std::ifstream in(std::string(TV_SOURCE_DIR) + "/scenarios/" + name);
  json scenario = json::parse(in);
  scenario.merge_patch(patch);
  return scenario;
}

inline void SetTimeScale(const char* factor) {
  setenv("TVSIM_TIME_SCALE", factor, 1);
  tvsim::ReloadTimeScaleForTesting();
}

class ChangeFlowFixture : public ::testing::Test {
 protected:
  void SetUp() override {
    tvsim::ResetExitRequests();
    // The sizes the application runs with (the framework's toolkit scale, the
    // application's base scale and body text size), so that the popups are
    // laid out, and keys move between their widgets, as on the TV.
    elm_config_scale_set(2.0);
    elm_app_base_scale_set(2.0);
    edje_text_class_set("black_body1_font", "VelmoraPrism_400", 30);
  }
  void TearDown() override {
    if (HasFailure()) tvtest::ReportFailure(m_pWindow, tv);
    AntennaSelectionPopup::DestroyInstance();
    SetTimeScale("1");
  }

  // Loads the TV, shows the antenna list and picks Cable (one row down from Air).
  void PickCable(const json& scenario) {
    tv.Load(scenario);
    tv.ClearLogs();
    tvsim::ResetExitRequests();
    m_pWindow = Util::GetWindow();
    tvtest::ShowOnScreen(m_pWindow);
    tvtest::FocusWindow(m_pWindow);
    AntennaSelectionPopup::GetInstance()->Show();
    ASSERT_EQ("Air", SettledListFocus());
    tvtest::PressKey(m_pWindow, "Down");
    tvtest::PressKey(m_pWindow, "Return");
  }

  // The list in `part` of the layout of a visible popup, or null: the antenna
  // list is in "elm.swallow.content", the stop-recording list in "item.area".
  Evas_Object* VisibleList(const char* part = "elm.swallow.content", Evas_Object** popupOut = nullptr) const {
    for (Evas_Object* popup : tvtest::FindWidgets(m_pWindow, "Elm_Popup")) {
      Evas_Object* layout = elm_object_content_get(popup);
      if (!layout || strcmp(elm_object_widget_type_get(layout), "Elm_Layout") != 0) continue;
      Evas_Object* list = elm_object_part_content_get(layout, part);
      if (!evas_object_visible_get(popup) || !list) continue;
      if (popupOut) *popupOut = popup;
      return list;
    }
    return nullptr;
  }
  Evas_Object* VisibleStopList(Evas_Object** popupOut = nullptr) const { return VisibleList("item.area", popupOut); }

  std::string SettledListFocus() {
    std::string text;
    tvtest::PumpUntil([&] { return VisibleList() && !(text = tvtest::FocusedRowText(VisibleList())).empty(); }, 2.0);
    return text;
  }

  // The visible message box (a popup whose content is a box of a label and a
  // row of buttons), or null; `buttons` receives its buttons from the start edge.
  Evas_Object* VisibleBox(std::vector<Evas_Object*>* buttons = nullptr) const {
    for (Evas_Object* popup : tvtest::FindWidgets(m_pWindow, "Elm_Popup")) {
      Evas_Object* column = elm_object_content_get(popup);
      if (!evas_object_visible_get(popup) || !column || strcmp(elm_object_widget_type_get(column), "Elm_Box") != 0) {
        continue;
      }
      Eina_List* parts = elm_box_children_get(column);
      Evas_Object* row = static_cast<Evas_Object*>(eina_list_nth(parts, 1));
      eina_list_free(parts);
      if (buttons && row) {
        Eina_List* children = elm_box_children_get(row);
        void* child;
        Eina_List* it;
        EINA_LIST_FOREACH(children, it, child) buttons->push_back(static_cast<Evas_Object*>(child));
        eina_list_free(children);
      }
      return popup;
    }
    return nullptr;
  }

  bool Exited() const { return tvsim::ExitRequests() >= 1; }

  // Sends a recorder event and waits until the application's callback has seen it.
  void SendRecorderEvent(int event, int result) {
    const size_t before = CallbackLines();
    tvsim::Control(tv.DbPath()).SendRecorderEvent(event, result);
    EXPECT_TRUE(tvtest::PumpUntil([&] { return CallbackLines() > before; }));
  }

  size_t CallbackLines() const {
    size_t lines = 0;
    for (const tvtest::LogLine& line : tv.Logs()) lines += line.message.find("sm_CbSvcPvr(") != std::string::npos;
    return lines;
  }

  json Tuning() const { return tv.Show()["tuning_changes"]; }
  json Requests() const { return tv.Show()["recorder_requests"]; }
  // The service ids of the stop requests, in order.
  std::vector<uint64_t> Stopped() const {
    std::vector<uint64_t> ids;
    for (const json& request : Requests()) {
      EXPECT_EQ(kCaller, request["caller"]);
      if (request["op"] == "stop_recording") ids.push_back(request["service_id"]);
    }
    return ids;
  }
  // True when the TV switched exactly once, to Cable.
  bool SwitchedToCable() const {
    const json tuning = Tuning();
    return tuning.size() == 1 && tuning[0]["antenna"] == 1 && tuning[0]["service"] == 21;
  }

  tvtest::TempTv tv;
  Evas_Object* m_pWindow = nullptr;
};

}  // namespace flowtest
