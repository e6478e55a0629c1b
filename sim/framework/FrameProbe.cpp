#include "FrameProbe.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

namespace tvsim {
namespace {

const char* const kProbeKey = "tvsim_frame_probe";

int s_fd = -2;  // -2: not looked at yet, -1: off
Ecore_Event_Handler* s_keyHandler = nullptr;

int ProbeFile() {
  if (s_fd == -2) {
    const char* path = std::getenv("TVSIM_FRAME_PROBE");
    s_fd = (path != nullptr && *path != '\0') ? open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644) : -1;
  }
  return s_fd;
}

long long NowNs() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<long long>(now.tv_sec) * 1000000000LL + now.tv_nsec;
}

// One write per line, so a reader never sees half of one.
void WriteLine(const char* line, int length) {
  if (length > 0 && write(s_fd, line, static_cast<size_t>(length)) < 0) {
    s_fd = -1;  // the reader went away: stop probing
  }
}

bool IsGenlist(const Evas_Object* object) {
  const char* type = evas_object_type_get(object);
  return type != nullptr && strcasecmp(type, "Elm_Genlist") == 0;
}

// The row as the viewer sees it: realized and wholly inside the list.
bool RowOnScreen(Evas_Object* list, Elm_Object_Item* row) {
  Eina_List* realized = elm_genlist_realized_items_get(list);
  const bool isRealized = eina_list_data_find(realized, row) != nullptr;
  eina_list_free(realized);
  if (!isRealized) return false;
  Evas_Object* track = elm_object_item_track(row);
  if (track == nullptr) return false;
  Evas_Coord x, y, w, h, lx, ly, lw, lh;
  evas_object_geometry_get(track, &x, &y, &w, &h);
  elm_object_item_untrack(row);
  evas_object_geometry_get(list, &lx, &ly, &lw, &lh);
  return w > 0 && h > 0 && y >= ly && y + h <= ly + lh;
}

// What the viewer reads on the focused widget, as one line of plain text: the
// focused row's main text, or a focused button's label.
std::string FocusedText(Evas_Object* focused, Elm_Object_Item* row) {
  const char* markup = nullptr;
  if (row != nullptr) {
    markup = elm_object_item_part_text_get(row, nullptr);
  } else if (focused != nullptr && evas_object_type_get(focused) != nullptr &&
             strcasecmp(evas_object_type_get(focused), "Elm_Button") == 0) {
    markup = elm_object_part_text_get(focused, nullptr);
  }
  if (markup == nullptr) return "";
  char* plain = elm_entry_markup_to_utf8(markup);
  std::string text = plain != nullptr ? plain : "";
  free(plain);
  for (char& c : text) {
    if (c == '\n' || c == '\r' || c == '\t') c = ' ';
  }
  // One write per line stays atomic below PIPE_BUF; cut between characters.
  size_t end = std::min<size_t>(text.size(), 400);
  while (end > 0 && end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end);
}

void OnRenderPost(void* data, Evas*, void* event) {
  const auto* post = static_cast<const Evas_Event_Render_Post*>(event);
  // A render pass that drew nothing is no frame.
  if (s_fd < 0 || post == nullptr || post->updated_area == nullptr) return;
  const long long now = NowNs();
  auto* window = static_cast<Evas_Object*>(data);
  int row = 0;
  int shown = 0;
  Evas_Object* focused = elm_object_focused_object_get(window);
  Elm_Object_Item* item = nullptr;
  if (focused != nullptr && IsGenlist(focused)) {
    item = elm_object_focused_item_get(focused);
    if (item != nullptr) {
      row = elm_genlist_item_index_get(item);
      shown = (elm_win_focus_get(window) && RowOnScreen(focused, item)) ? 1 : 0;
    }
  }
  const std::string text = FocusedText(focused, item);
  char head[64];
  std::snprintf(head, sizeof head, "frame %lld %d %d ", now, row, shown);
  const std::string line = head + text + "\n";
  WriteLine(line.data(), static_cast<int>(line.size()));
}

Eina_Bool OnKeyDown(void*, int, void* event) {
  const auto* key = static_cast<const Ecore_Event_Key*>(event);
  if (s_fd >= 0 && key != nullptr) {
    char line[128];
    WriteLine(line, std::snprintf(line, sizeof line, "key %lld %s\n", NowNs(), key->keyname ? key->keyname : "?"));
  }
  return ECORE_CALLBACK_PASS_ON;
}

void OnWindowDel(void* data, Evas* canvas, Evas_Object*, void*) {
  evas_event_callback_del_full(canvas, EVAS_CALLBACK_RENDER_POST, OnRenderPost, data);
}

}  // namespace

void AttachFrameProbe(Evas_Object* window) {
  if (window == nullptr || ProbeFile() < 0 || evas_object_data_get(window, kProbeKey) != nullptr) return;
  evas_object_data_set(window, kProbeKey, window);
  Evas* canvas = evas_object_evas_get(window);
  evas_event_callback_add(canvas, EVAS_CALLBACK_RENDER_POST, OnRenderPost, window);
  evas_object_event_callback_add(window, EVAS_CALLBACK_DEL, OnWindowDel, window);
  if (s_keyHandler == nullptr) s_keyHandler = ecore_event_handler_add(ECORE_EVENT_KEY_DOWN, OnKeyDown, nullptr);
}

}  // namespace tvsim
