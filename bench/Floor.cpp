// The floor: the least a plain Elementary program does to show what the antenna
// popup shows (a popup with a title, a list of the same rows with the current one
// focused, and a Close button), started like the application. The benchmark
// compares the application with it.
// Usage: bench-floor ROWS_FILE FOCUS_ROW   (one row text a line; FOCUS_ROW 1-based, 0: none)
#include <Efreet.h>
#include <Elementary.h>

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "FrameProbe.h"
#include "Toolkit.h"

namespace {

struct Floor {
  std::vector<std::string> rows;
  int focusRow = 0;
  Evas_Object* window = nullptr;
  Evas_Object* list = nullptr;
  Elm_Object_Item* focusItem = nullptr;
  bool focusPending = false;
};

Floor s_floor;
// The application's list area at base scale: the popup's width, five rows high.
const int kListWidth = 760;
const int kRowHeight = 96;

char* RowText(void* data, Evas_Object*, const char*) {
  return elm_entry_utf8_to_markup(static_cast<const std::string*>(data)->c_str());
}

// Item focus only sticks once the window has the focus and the row is realized.
void FocusJob(void*) {
  if (!s_floor.focusPending || !elm_win_focus_get(s_floor.window)) return;
  Eina_List* realized = elm_genlist_realized_items_get(s_floor.list);
  const bool ready = eina_list_data_find(realized, s_floor.focusItem) != nullptr;
  eina_list_free(realized);
  if (!ready) return;
  s_floor.focusPending = false;
  elm_object_focus_set(s_floor.list, EINA_TRUE);
  elm_genlist_item_selected_set(s_floor.focusItem, EINA_TRUE);
  elm_object_item_focus_set(s_floor.focusItem, EINA_TRUE);
}

void OnRealized(void*, Evas_Object*, void* item) {
  if (item == s_floor.focusItem) ecore_job_add(FocusJob, nullptr);
}

void OnFocusIn(void*, Evas_Object*, void*) { ecore_job_add(FocusJob, nullptr); }

// Escape ends the floor, as Back ends the application. Watched as an Ecore event,
// not on the popup, which takes Escape for itself.
Eina_Bool OnKey(void*, int, void* event) {
  const char* key = static_cast<Ecore_Event_Key*>(event)->keyname;
  if (key != nullptr && std::string(key) == "Escape") elm_exit();
  return ECORE_CALLBACK_PASS_ON;
}

void OnClose(void*, Evas_Object*, void*) { elm_exit(); }

void Build() {
  elm_app_base_scale_set(2.0);
  edje_text_class_set("black_body1_font", "VelmoraPrism_400", 30);  // as the application sets it
  Evas_Object* window = elm_win_add(nullptr, "Floor Wnd", ELM_WIN_DIALOG_BASIC);
  s_floor.window = window;
  elm_win_title_set(window, "Floor Wnd");
  elm_win_autodel_set(window, EINA_TRUE);
  elm_win_alpha_set(window, EINA_TRUE);
  elm_win_focus_highlight_enabled_set(window, EINA_TRUE);
  const tvsim::ScreenSize screen = tvsim::Screen();
  evas_object_resize(window, screen.width, screen.height);
  tvsim::AttachFrameProbe(window);
  evas_object_smart_callback_add(window, "focus,in", OnFocusIn, nullptr);
  evas_object_smart_callback_add(window, "delete,request", OnClose, nullptr);

  Evas_Object* popup = elm_popup_add(window);
  elm_object_style_set(popup, "C_PopupBasic_WhiteRight");
  evas_object_size_hint_weight_set(popup, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
  evas_object_size_hint_align_set(popup, EVAS_HINT_FILL, EVAS_HINT_FILL);
  elm_object_part_text_set(popup, "title,text", "Antenna Type");

  // A list in a popup shows rows only in a container with a minimum size: a
  // table cell shared with an invisible rectangle of the application's list area.
  Evas_Object* table = elm_table_add(popup);
  evas_object_size_hint_weight_set(table, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
  evas_object_size_hint_align_set(table, EVAS_HINT_FILL, EVAS_HINT_FILL);
  Evas_Object* spacer = evas_object_rectangle_add(evas_object_evas_get(window));
  evas_object_color_set(spacer, 0, 0, 0, 0);
  const double scale = elm_config_scale_get() / elm_app_base_scale_get();
  evas_object_size_hint_min_set(spacer, static_cast<Evas_Coord>(kListWidth * scale),
                               static_cast<Evas_Coord>(kRowHeight * 5 * scale));
  evas_object_show(spacer);
  elm_table_pack(table, spacer, 0, 0, 1, 1);
  Evas_Object* list = elm_genlist_add(table);
  s_floor.list = list;
  elm_object_style_set(list, "C_Scrollbar_White");
  elm_genlist_select_mode_set(list, ELM_OBJECT_SELECT_MODE_ALWAYS);
  evas_object_size_hint_weight_set(list, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
  evas_object_size_hint_align_set(list, EVAS_HINT_FILL, EVAS_HINT_FILL);
  evas_object_smart_callback_add(list, "realized", OnRealized, nullptr);
  Elm_Genlist_Item_Class* itemClass = elm_genlist_item_class_new();
  itemClass->item_style = "C_Textitem_WhiteSingleline01";
  itemClass->func.text_get = RowText;
  for (size_t i = 0; i < s_floor.rows.size(); ++i) {
    Elm_Object_Item* item =
        elm_genlist_item_append(list, itemClass, &s_floor.rows[i], nullptr, ELM_GENLIST_ITEM_NONE, nullptr, nullptr);
    if (static_cast<int>(i) + 1 == s_floor.focusRow) s_floor.focusItem = item;
  }
  elm_genlist_item_class_free(itemClass);
  if (s_floor.focusItem != nullptr) {
    elm_genlist_item_show(s_floor.focusItem, ELM_GENLIST_ITEM_SCROLLTO_TOP);
    s_floor.focusPending = true;
  }
  evas_object_show(list);
  elm_table_pack(table, list, 0, 0, 1, 1);
  elm_object_content_set(popup, table);

  Evas_Object* close = elm_button_add(popup);
  elm_object_style_set(close, "C_ButtonBasic_WhiteText");
  elm_object_text_set(close, "Close");
  evas_object_smart_callback_add(close, "clicked", OnClose, nullptr);
  elm_object_part_content_set(popup, "button1", close);

  evas_object_show(popup);
  evas_object_show(window);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::ifstream in(argv[1]);
  for (std::string line; std::getline(in, line);) s_floor.rows.push_back(line);
  s_floor.focusRow = std::atoi(argv[2]);

  // The same start-up as the platform's framework.
  if (std::getenv("LANG") == nullptr) setenv("LANG", "C.UTF-8", 1);
  std::setlocale(LC_ALL, "");
  ecore_app_no_system_modules();
  efreet_cache_disable();
  setenv("ELM_SCALE", "2.0", 0);
  if (elm_init(argc, argv) <= 0) return 2;
  tvsim::AddPlatformTheme();
  elm_config_agressive_withdrawn_set(EINA_FALSE);
  ecore_event_handler_add(ECORE_EVENT_KEY_DOWN, OnKey, nullptr);
  Build();
  elm_run();
  elm_shutdown();
  return 0;
}
