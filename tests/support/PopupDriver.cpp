#include "PopupDriver.h"

#include <cstdlib>
#include <cstring>
#include <fstream>

#include "AntennaSelectionPopup.h"
#include "App.h"
#include "AppFramework.h"
#include "Control.h"
#include "TimeScale.h"
#include "UiDriver.h"
#include "Util.h"

namespace tvtest {

json Scenario(const char* name, const json& patch) {
  std::ifstream in(std::string(TV_SOURCE_DIR) + "/scenarios/" + name);
  json scenario = json::parse(in);
  scenario.merge_patch(patch);
  return scenario;
}

json SampleTv(const json& patch) { return Scenario("sample.json", patch); }

void SetTimeScale(const char* factor) {
  setenv("TVSIM_TIME_SCALE", factor, 1);
  tvsim::ReloadTimeScaleForTesting();
}

namespace {

// The visible popup whose content is a widget of `contentType` with `part` (when given).
Evas_Object* ShownPopup(const char* contentType, const char* part = nullptr) {
  for (Evas_Object* popup : FindWidgets(Util::GetWindow(), "Elm_Popup")) {
    Evas_Object* content = elm_object_content_get(popup);
    if (!evas_object_visible_get(popup) || !content || strcmp(elm_object_widget_type_get(content), contentType) != 0) {
      continue;
    }
    if (part == nullptr || elm_object_part_content_get(content, part)) return popup;
  }
  return nullptr;
}

}  // namespace

Evas_Object* ShownList() { return ShownPopup("Elm_Layout", "elm.swallow.content"); }
Evas_Object* ShownBox() { return ShownPopup("Elm_Box"); }

Evas_Object* ShownStopList(Evas_Object** popupOut) {
  Evas_Object* popup = ShownPopup("Elm_Layout", "item.area");
  if (popupOut) *popupOut = popup;
  return popup ? elm_object_part_content_get(elm_object_content_get(popup), "item.area") : nullptr;
}

Evas_Object* GenlistOf(Evas_Object* popup) {
  Evas_Object* layout = popup ? elm_object_content_get(popup) : nullptr;
  return layout ? elm_object_part_content_get(layout, "elm.swallow.content") : nullptr;
}

std::string FocusedRow() { return FocusedRowText(GenlistOf(ShownList())); }
std::vector<std::string> ShownRows() { return RowTexts(GenlistOf(ShownList())); }

void PopupTest::SetUp() {
  tvsim::ResetExitRequests();
  // The sizes the application runs with (the framework's toolkit scale, the
  // application's base scale and body text size), so that the popups are
  // laid out, and keys move between their widgets, as on the TV.
  elm_config_scale_set(2.0);
  elm_app_base_scale_set(2.0);
  edje_text_class_set("black_body1_font", "VelmoraPrism_400", 30);
}

void PopupTest::TearDown() {
  if (HasFailure()) ReportFailure(tv);
  AntennaSelectionPopup::DestroyInstance();
  SetTimeScale("1");
}

bool PopupTest::Open(const json& scenario, bool currentRow) {
  AntennaSelectionPopup::DestroyInstance();
  tv.Load(scenario);
  tv.ClearLogs();
  tvsim::ResetExitRequests();
  m_pWindow = Util::GetWindow();
  ShowOnScreen(m_pWindow);
  FocusWindow(m_pWindow);
  AntennaSelectionPopup::GetInstance()->Show();
  return !currentRow || PumpUntil([] { return !FocusedRow().empty(); }, 2.0);
}

std::string PopupTest::SettledFocus() {
  PumpUntil([] { return !FocusedRow().empty(); }, 2.0);
  return FocusedRow();
}

void PopupTest::Press(const std::vector<const char*>& keys) {
  for (const char* key : keys) PressKey(m_pWindow, key);
}

void PopupTest::PickCable(const json& scenario) {
  Open(scenario);
  ASSERT_EQ("Air", FocusedRow());
  Press({"Down", "Return"});
}

std::vector<uint64_t> PopupTest::Stopped() const {
  std::vector<uint64_t> ids;
  for (const json& request : Requests()) {
    EXPECT_EQ("org.norix.epg", request["caller"]);
    if (request["op"] == "stop_recording") ids.push_back(request["service_id"]);
  }
  return ids;
}

bool PopupTest::SwitchedTo(int antenna, int service) const {
  const json tuning = Tuning();
  return tuning.size() == 1 && tuning[0]["antenna"] == antenna && tuning[0]["service"] == service;
}

bool PopupTest::Exited() const { return tvsim::ExitRequests() >= 1; }

void PopupTest::SendRecorderEvent(int event, int result) {
  auto heard = [&] {
    size_t lines = 0;
    for (const LogLine& line : tv.Logs()) lines += line.message.find("sm_CbSvcPvr(") != std::string::npos;
    return lines;
  };
  const size_t before = heard();
  tvsim::Control(tv.DbPath()).SendRecorderEvent(event, result);
  EXPECT_TRUE(PumpUntil([&] { return heard() > before; }));
}

}  // namespace tvtest
