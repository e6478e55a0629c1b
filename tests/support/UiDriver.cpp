#include "UiDriver.h"

#include <Ecore_Evas.h>
#include <Ecore_Input.h>
#include <gtest/gtest.h>

#include "TempTv.h"

#include <cstdlib>
#include <cstring>

namespace tvtest {

namespace {

struct Wait {
  const std::function<bool()>& pred;
  double deadline;
  bool finished;  // the poll quit the loop itself (and its timer is gone)
};

Eina_Bool CheckWait(void* data) {
  auto* wait = static_cast<Wait*>(data);
  if (!wait->pred() && ecore_time_get() < wait->deadline) return ECORE_CALLBACK_RENEW;
  wait->finished = true;
  ecore_main_loop_quit();
  return ECORE_CALLBACK_CANCEL;
}

void CountRender(void* data, Evas*, void*) { ++*static_cast<int*>(data); }

unsigned int s_timestamp = 1000;

}  // namespace

bool PumpUntil(const std::function<bool()>& pred, double timeoutSeconds) {
  const double deadline = ecore_time_get() + timeoutSeconds;
  for (;;) {
    if (pred()) return true;
    if (ecore_time_get() >= deadline) return false;
    Wait wait{pred, deadline, false};
    // A loop timer, so that the platform's time scale leaves the poll alone.
    Ecore_Timer* timer = ecore_timer_loop_add(0.002, CheckWait, &wait);
    ecore_main_loop_begin();
    // ui_app_exit() outside ui_app_main also quits the loop: carry on polling.
    if (!wait.finished) ecore_timer_del(timer);
  }
}

bool RenderedOnce(Evas_Object* window, double timeoutSeconds) {
  Evas* evas = evas_object_evas_get(window);
  int renders = 0;
  evas_event_callback_add(evas, EVAS_CALLBACK_RENDER_POST, CountRender, &renders);
  // A little damage makes sure the loop renders, changes or not. (A render
  // forced here, outside the loop, would run before the widgets' own
  // pending layout jobs and upset them.)
  evas_damage_rectangle_add(evas, 0, 0, 1, 1);
  const bool rendered = PumpUntil([&] { return renders > 0; }, timeoutSeconds);
  evas_event_callback_del_full(evas, EVAS_CALLBACK_RENDER_POST, CountRender, &renders);
  return rendered;
}

void ShowOnScreen(Evas_Object* window) {
  evas_object_resize(window, 1920, 1080);
  evas_object_show(window);
}

void FocusWindow(Evas_Object* window) {
  Ecore_Evas* ee = ecore_evas_ecore_evas_get(evas_object_evas_get(window));
  ecore_evas_focus_set(ee, EINA_FALSE);
  ecore_evas_focus_set(ee, EINA_TRUE);
}

void FeedKey(Evas_Object* window, const char* key) {
  Evas* evas = evas_object_evas_get(window);
  evas_event_feed_key_down(evas, key, key, nullptr, nullptr, ++s_timestamp, nullptr);
  evas_event_feed_key_up(evas, key, key, nullptr, nullptr, ++s_timestamp, nullptr);
}

void QueueKey(Evas_Object* window, const char* key) {
  Ecore_Evas* ee = ecore_evas_ecore_evas_get(evas_object_evas_get(window));
  const Ecore_Window id = ecore_evas_window_get(ee);  // the id the canvas takes input events for
  for (int type : {ECORE_EVENT_KEY_DOWN, ECORE_EVENT_KEY_UP}) {
    // One allocation with its text, as the main loop frees it.
    auto* event = static_cast<Ecore_Event_Key*>(calloc(1, sizeof(Ecore_Event_Key) + strlen(key) + 1));
    char* name = strcpy(reinterpret_cast<char*>(event + 1), key);
    event->keyname = event->key = event->string = name;
    event->window = event->root_window = event->event_window = id;
    event->timestamp = ++s_timestamp;
    ecore_event_add(type, event, nullptr, nullptr);
  }
}

void PressKey(Evas_Object* window, const char* key) {
  FeedKey(window, key);
  RenderedOnce(window);
}

std::vector<Evas_Object*> FindWidgets(Evas_Object* window, const char* type) {
  std::vector<Evas_Object*> found;
  if (window == nullptr) return found;
  // Popups are not members of the window but top-level objects of its canvas.
  Eina_List* objects = evas_objects_in_rectangle_get(evas_object_evas_get(window), -100000, -100000, 200000,
                                                     200000, EINA_TRUE, EINA_TRUE);
  void* item;
  EINA_LIST_FREE(objects, item) {
    auto* object = static_cast<Evas_Object*>(item);
    if (!elm_object_widget_check(object)) continue;
    const char* widgetType = elm_object_widget_type_get(object);
    if (widgetType != nullptr && strcmp(widgetType, type) == 0) found.push_back(object);
  }
  return found;
}

Evas_Object* FindWidget(Evas_Object* root, const char* type) {
  std::vector<Evas_Object*> found = FindWidgets(root, type);
  return found.empty() ? nullptr : found.front();
}

std::string RowText(Elm_Object_Item* item, const char* part) {
  // Asked from the row's item class, as the list itself does, so that rows
  // scrolled out of view (not realized) answer too.
  const Elm_Genlist_Item_Class* itc = item ? elm_genlist_item_item_class_get(item) : nullptr;
  if (itc == nullptr || itc->func.text_get == nullptr) return "";
  char* markup = itc->func.text_get(const_cast<void*>(elm_object_item_data_get(item)),
                                    elm_object_item_widget_get(item), part);
  if (markup == nullptr) return "";
  char* plain = elm_entry_markup_to_utf8(markup);
  std::string text = plain ? plain : "";
  free(plain);
  free(markup);
  return text;
}

std::string FocusedRowText(Evas_Object* genlist, const char* part) {
  return RowText(genlist ? elm_object_focused_item_get(genlist) : nullptr, part);
}

std::vector<std::string> RowTexts(Evas_Object* genlist, const char* part) {
  std::vector<std::string> texts;
  if (genlist == nullptr) return texts;
  for (Elm_Object_Item* item = elm_genlist_first_item_get(genlist); item; item = elm_genlist_item_next_get(item)) {
    texts.push_back(RowText(item, part));
  }
  return texts;
}

void ReportFailure(const TempTv& tv) {
  std::string log;
  for (const std::string& message : tv.AppMessages()) log += "  " + message + "\n";
  ADD_FAILURE() << "application log:\n" << log;
}

}  // namespace tvtest
