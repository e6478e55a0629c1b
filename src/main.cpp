// Process entry and the lifecycle callbacks of the application framework.
#include <Elementary.h>

#include "AntennaSelectionPopup.h"
#include "App.h"
#include "Logging.h"
#include "Recorder.h"
#include "Settings.h"
#include "Util.h"

namespace {

const double kAppBaseScale = 2.0;
const char* const kTextClass = "black_body1_font";
const char* const kTextClassFont = "VelmoraPrism_400";
const int kTextSizeEnlarged = 36;
const int kTextSizeNormal = 30;
const char* const kFocusZoomKey = "db/menu/system/accessibility/focuszoom";
const int kEventHandlerCount = 5;

// Set by the first launch request: later ones must not rebuild the popup.
bool s_bAppControlDone = false;
app_event_handler_h s_handlers[kEventHandlerCount] = {};

void set_text_class() {
  const int nReference = Util::IsEnlarge() ? kTextSizeEnlarged : kTextSizeNormal;
  const double dScale = elm_config_scale_get();
  const double dBaseScale = elm_app_base_scale_get();
  const int nSize = static_cast<int>(dScale * nReference / dBaseScale + 0.5);
  edje_text_class_set(kTextClass, kTextClassFont, nSize);
}

void focuszoom_changed(keynode_t*, void*) {
  set_text_class();
  AntennaSelectionPopup::GetInstance()->Update();
}

bool app_create(void*) {
  APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "begin app_create\n");
  elm_app_base_scale_set(kAppBaseScale);
  if (rec_service_init() != 1) {
    APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "rec_service_init faild!!!!!!!!!!!!!!!!!!!\n");
  }
  APP_LOG(LOG_ID_MAIN, DLOG_WARN, "rec_service_init()\n");
  ui_assist_init(0, 0);
  // Only ever turned on here; lang_changed also turns it off.
  if (Util::ReverseOSD()) elm_config_mirrored_set(EINA_TRUE);
  set_text_class();
  vconf_notify_key_changed(kFocusZoomKey, focuszoom_changed, nullptr);
  APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "end app_create\n");
  return true;
}

void app_control(app_control_h, void*) {
  APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "begin app_control\n");
  if (s_bAppControlDone) return;
  s_bAppControlDone = true;
  Evas_Object* pWindow = Util::GetWindow();
  if (pWindow) elm_win_iconified_set(pWindow, EINA_FALSE);
  // A resume before the first launch may have built a popup already.
  AntennaSelectionPopup::DestroyInstance();
  AntennaSelectionPopup::GetInstance();
  APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "end app_control\n");
}

void app_resume(void*) {
  APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "begin app_resume\n");
  AntennaSelectionPopup::GetInstance()->Show();
  APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "end app_resume\n");
}

// The application never runs in the background.
void app_pause(void*) {
  APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "begin app_pause\n");
  ui_app_exit();
  APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "end app_pause\n");
}

void app_terminate(void*) {
  APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "begin app_terminate\n");
  AntennaSelectionPopup::DestroyInstance();
  ui_assist_shutdown();
  rec_service_destroy();
  vconf_ignore_key_changed(kFocusZoomKey, focuszoom_changed);
  APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "end app_terminate\n");
}

void lang_changed(app_event_info_h, void*) {
  APP_LOG(LOG_ID_MAIN, DLOG_INFO, "In app lang_change\n");
  // Texts already on screen stay as they were translated.
  elm_config_mirrored_set(Util::ReverseOSD() ? EINA_TRUE : EINA_FALSE);
}

}  // namespace

int main(int argc, char** argv) {
  APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "PERF_CHECK1\n");
  ui_app_lifecycle_callback_s callbacks = {};
  callbacks.create = app_create;
  callbacks.terminate = app_terminate;
  callbacks.pause = app_pause;
  callbacks.resume = app_resume;
  callbacks.app_control = app_control;
  ui_app_add_event_handler(&s_handlers[APP_EVENT_LANGUAGE_CHANGED], APP_EVENT_LANGUAGE_CHANGED, lang_changed,
                           nullptr);
  const int nResult = ui_app_main(argc, argv, &callbacks, nullptr);
  if (nResult != 0) {
    APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, "app_efl_main() is failed. err=%d\n", nResult);
  }
  return nResult;
}
