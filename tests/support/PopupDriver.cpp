#include "PopupDriver.h"

#include <cstdlib>
#include <cstring>
#include <fstream>

#include "App.h"
#include "TimeScale.h"
#include "UiDriver.h"
#include "Util.h"

namespace tvtest {

nlohmann::json SampleTv(const nlohmann::json& patch) {
  std::ifstream in(std::string(TV_SOURCE_DIR) + "/scenarios/sample.json");
  nlohmann::json scenario = nlohmann::json::parse(in);
  scenario.merge_patch(patch);
  return scenario;
}

void SetTimeScale(const char* factor) {
  setenv("TVSIM_TIME_SCALE", factor, 1);
  tvsim::ReloadTimeScaleForTesting();
}

namespace {

Evas_Object* ShownPopup(const char* contentType) {
  for (Evas_Object* popup : FindWidgets(Util::GetWindow(), "Elm_Popup")) {
    Evas_Object* content = elm_object_content_get(popup);
    if (evas_object_visible_get(popup) && content && strcmp(elm_object_widget_type_get(content), contentType) == 0) {
      return popup;
    }
  }
  return nullptr;
}

}  // namespace

Evas_Object* ShownList() { return ShownPopup("Elm_Layout"); }
Evas_Object* ShownBox() { return ShownPopup("Elm_Box"); }

Evas_Object* GenlistOf(Evas_Object* popup) {
  Evas_Object* layout = popup ? elm_object_content_get(popup) : nullptr;
  return layout ? elm_object_part_content_get(layout, "elm.swallow.content") : nullptr;
}

std::string FocusedRow() { return FocusedRowText(GenlistOf(ShownList())); }
std::vector<std::string> ShownRows() { return RowTexts(GenlistOf(ShownList())); }

Viewer::Viewer(std::vector<Step> steps, double seconds)
    : m_steps(std::move(steps)),
      m_deadline(ecore_time_get() + seconds),
      m_pTimer(ecore_timer_loop_add(0.01, m_Tick, this)) {}

Viewer::~Viewer() { ecore_timer_del(m_pTimer); }

std::string Viewer::Waiting() const { return m_next < m_steps.size() ? m_steps[m_next].name : ""; }

Eina_Bool Viewer::m_Tick(void* data) {
  auto* self = static_cast<Viewer*>(data);
  if (self->m_next < self->m_steps.size() && self->m_steps[self->m_next].ready()) {
    self->m_steps[self->m_next++].act();
  } else if (ecore_time_get() > self->m_deadline && !self->m_bEnded) {
    self->m_bEnded = true;
    ui_app_exit();
  }
  return ECORE_CALLBACK_RENEW;
}

}  // namespace tvtest
