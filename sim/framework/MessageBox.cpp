// The platform's confirmation box: an Elementary popup in the application's
// window with a title, a message and up to three buttons side by side, drawn
// with the platform theme's white styles. Keys: the select key (and a mouse
// click) presses the focused button with "Return"; Back presses it with
// "XF86Back"; Left/Right move the focus. The owner may delete the box from
// inside any of its callbacks, so the widgets are deleted from the main loop
// afterwards and nothing here touches the box once a callback has run.
#include "MessageBox.h"

#include <Elementary.h>

#include <cstring>

namespace {

constexpr int kMaxButtons = 3;
constexpr char kPopupStyleWhite[] = "C_PopupBasic_WhiteBottom";
constexpr char kButtonStyleWhite[] = "C_ButtonBasic_WhiteText";
constexpr char kSelectKey[] = "Return";
constexpr char kBackKey[] = "XF86Back";
// The message in the platform theme's body size and text colour ("tv_text");
// the toolkit's default label style is small and white. The platform theme is
// drawn for the application's base scale, the label's theme for scale 1.
constexpr double kMessageTextSize = 34.0;
constexpr char kWhiteTextColour[] = " color=#222222ff";
// The text area inside the white popup (1200 wide, 48 padding each side).
constexpr int kMessageWidth = 1104;
constexpr int kButtonGap = 32;

// Deletes a widget from the main loop, unless it is gone before that (its
// window was deleted first).
struct DeferredDelete {
  Evas_Object* object;
  Ecore_Job* job;
};

void OnDeferredObjectDel(void* data, Evas*, Evas_Object*, void*) {
  auto* pending = static_cast<DeferredDelete*>(data);
  ecore_job_del(pending->job);
  delete pending;
}

void RunDeferredDelete(void* data) {
  auto* pending = static_cast<DeferredDelete*>(data);
  evas_object_event_callback_del_full(pending->object, EVAS_CALLBACK_DEL, OnDeferredObjectDel, pending);
  evas_object_del(pending->object);
  delete pending;
}

void DeleteLater(Evas_Object* object) {
  evas_object_hide(object);
  auto* pending = new DeferredDelete{object, nullptr};
  pending->job = ecore_job_add(RunDeferredDelete, pending);
  evas_object_event_callback_add(object, EVAS_CALLBACK_DEL, OnDeferredObjectDel, pending);
}

}  // namespace

struct MessageBox::Impl {
  explicit Impl(MessageBox* owner, bool modal) : owner(owner), modal(modal) {}

  struct Button {
    Evas_Object* widget = nullptr;
    ButtonCallback callback = nullptr;
    void* data = nullptr;
  };

  MessageBox* owner;
  bool modal;
  bool white = true;
  bool richText = false;
  int buttonCount = 0;
  int defaultFocus = 1;
  Evas_Object* popup = nullptr;
  Evas_Object* message = nullptr;
  Button buttons[kMaxButtons];

  bool ValidButton(int button) const { return button >= 1 && button <= buttonCount; }

  int FocusedButton() const {
    for (int i = 0; i < buttonCount; ++i) {
      if (buttons[i].widget && elm_object_focus_get(buttons[i].widget)) return i + 1;
    }
    return 0;
  }

  void FocusDefault() {
    if (ValidButton(defaultFocus) && buttons[defaultFocus - 1].widget) {
      elm_object_focus_set(buttons[defaultFocus - 1].widget, EINA_TRUE);
    }
  }

  // The widgets go away with the box's callbacks unhooked, so that none of
  // them reaches a box that is being torn down.
  void ReleaseWidgets() {
    if (!popup) return;
    Evas_Object* old = popup;
    popup = nullptr;
    message = nullptr;
    evas_object_event_callback_del_full(old, EVAS_CALLBACK_DEL, OnPopupDel, this);
    elm_object_event_callback_del(old, OnKey, this);
    for (Button& b : buttons) {
      if (b.widget) evas_object_smart_callback_del_full(b.widget, "clicked", OnClicked, this);
      if (b.widget) evas_object_smart_callback_del_full(b.widget, "focused", OnFocused, this);
      b.widget = nullptr;
    }
    DeleteLater(old);
  }

  // Presses a button. The callback is the last thing done: it may delete the box.
  void Press(int button, const char* key) {
    if (!ValidButton(button)) return;
    if (owner->IsVisible()) owner->t_StartTimer();  // an answer is activity too
    const Button& b = buttons[button - 1];
    if (b.callback) b.callback(b.data, popup, key);
  }

  static void OnClicked(void* data, Evas_Object* object, void*) {
    auto* self = static_cast<Impl*>(data);
    for (int i = 0; i < self->buttonCount; ++i) {
      if (self->buttons[i].widget == object) return self->Press(i + 1, kSelectKey);
    }
  }

  static void OnFocused(void* data, Evas_Object*, void*) {
    // Focus moves only on a key press (or the box's own default focus).
    auto* self = static_cast<Impl*>(data);
    if (self->owner->IsVisible()) self->owner->t_StartTimer();
  }

  // Keys that the focused button does not use itself reach the popup here.
  static Eina_Bool OnKey(void* data, Evas_Object*, Evas_Object*, Evas_Callback_Type type, void* info) {
    auto* self = static_cast<Impl*>(data);
    if (type != EVAS_CALLBACK_KEY_DOWN) return EINA_FALSE;
    auto* event = static_cast<Evas_Event_Key_Down*>(info);
    if (event->event_flags & EVAS_EVENT_FLAG_ON_HOLD) return EINA_FALSE;
    if (self->owner->IsVisible()) self->owner->t_StartTimer();
    if (event->key && std::strcmp(event->key, kBackKey) == 0) {
      int button = self->FocusedButton();
      if (button == 0) button = self->defaultFocus;
      if (!self->ValidButton(button)) return EINA_FALSE;
      event->event_flags = static_cast<Evas_Event_Flags>(event->event_flags | EVAS_EVENT_FLAG_ON_HOLD);
      self->Press(button, kBackKey);  // may delete the box
      return EINA_TRUE;
    }
    return EINA_FALSE;
  }

  // The window went away with the box in it: forget the widgets silently.
  static void OnPopupDel(void* data, Evas*, Evas_Object*, void*) {
    auto* self = static_cast<Impl*>(data);
    self->popup = nullptr;
    self->message = nullptr;
    for (Button& b : self->buttons) b.widget = nullptr;
    self->owner->t_StopTimer();
    self->owner->m_bVisible = false;
  }
};

MessageBox::MessageBox(bool modal) : m_pImpl(new Impl(this, modal)) {}

MessageBox::~MessageBox() {
  MessageBox::Destroy();
  delete m_pImpl;
}

bool MessageBox::Create(Evas_Object* parent, int buttonCount, int backgroundColor, int /*icon*/, bool richText) {
  if (parent == nullptr || buttonCount < 1 || buttonCount > kMaxButtons) return false;
  MessageBox::Destroy();
  Impl& d = *m_pImpl;
  d.white = backgroundColor == BG_COLOR_WHITE;
  d.richText = richText;
  d.buttonCount = buttonCount;
  d.defaultFocus = 1;
  for (Impl::Button& b : d.buttons) b = Impl::Button();

  d.popup = elm_popup_add(parent);
  if (d.white) elm_object_style_set(d.popup, kPopupStyleWhite);
  elm_popup_orient_set(d.popup, ELM_POPUP_ORIENT_CENTER);
  // A modal box dims the screen and takes every click; other boxes let clicks
  // beside them through to the window.
  elm_popup_allow_events_set(d.popup, d.modal ? EINA_FALSE : EINA_TRUE);
  evas_object_size_hint_weight_set(d.popup, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
  evas_object_event_callback_add(d.popup, EVAS_CALLBACK_DEL, Impl::OnPopupDel, &d);
  elm_object_event_callback_add(d.popup, Impl::OnKey, &d);

  Evas_Object* column = elm_box_add(d.popup);
  elm_box_padding_set(column, 0, ELM_SCALE_SIZE(40));
  d.message = elm_label_add(column);
  elm_label_line_wrap_set(d.message, ELM_WRAP_MIXED);
  elm_label_wrap_width_set(d.message, ELM_SCALE_SIZE(kMessageWidth));
  evas_object_size_hint_weight_set(d.message, EVAS_HINT_EXPAND, 0.0);
  evas_object_size_hint_align_set(d.message, EVAS_HINT_FILL, 0.5);
  evas_object_show(d.message);
  elm_box_pack_end(column, d.message);

  // Box packing follows the toolkit's mirroring: button 1 sits at the start
  // edge, on the right for right-to-left languages.
  Evas_Object* row = elm_box_add(column);
  elm_box_horizontal_set(row, EINA_TRUE);
  elm_box_padding_set(row, ELM_SCALE_SIZE(kButtonGap), 0);
  for (int i = 0; i < buttonCount; ++i) {
    Evas_Object* button = elm_button_add(row);
    if (d.white) elm_object_style_set(button, kButtonStyleWhite);
    evas_object_smart_callback_add(button, "clicked", Impl::OnClicked, &d);
    evas_object_smart_callback_add(button, "focused", Impl::OnFocused, &d);
    evas_object_show(button);
    elm_box_pack_end(row, button);
    d.buttons[i].widget = button;
  }
  evas_object_show(row);
  elm_box_pack_end(column, row);
  evas_object_show(column);
  elm_object_content_set(d.popup, column);
  return true;
}

void MessageBox::SetTitle(const char* text) {
  if (m_pImpl->popup) elm_object_part_text_set(m_pImpl->popup, "title,text", text);
}

void MessageBox::SetMessage(const char* text) {
  Impl& d = *m_pImpl;
  if (!d.message) return;
  char* markup = (text && !d.richText) ? elm_entry_utf8_to_markup(text) : nullptr;
  const double baseScale = elm_app_base_scale_get();
  const int size = static_cast<int>(kMessageTextSize / (baseScale > 0.0 ? baseScale : 1.0) + 0.5);
  Eina_Strbuf* shown = eina_strbuf_new();
  eina_strbuf_append_printf(shown, "<font_size=%d%s align=center>", size, d.white ? kWhiteTextColour : "");
  eina_strbuf_append(shown, markup ? markup : (text ? text : ""));
  eina_strbuf_append(shown, "</>");
  elm_object_text_set(d.message, eina_strbuf_string_get(shown));
  eina_strbuf_free(shown);
  free(markup);
}

void MessageBox::SetButtonText(int button, const char* text, const char* style) {
  Impl& d = *m_pImpl;
  if (!d.ValidButton(button) || !d.buttons[button - 1].widget) return;
  Evas_Object* widget = d.buttons[button - 1].widget;
  if (style) elm_object_style_set(widget, style);
  char* markup = text ? elm_entry_utf8_to_markup(text) : nullptr;
  elm_object_text_set(widget, markup);
  free(markup);
}

void MessageBox::SetButtonCallback(int button, ButtonCallback callback, void* data) {
  Impl& d = *m_pImpl;
  if (!d.ValidButton(button)) return;
  d.buttons[button - 1].callback = callback;
  d.buttons[button - 1].data = data;
}

void MessageBox::SetDefaultFocus(int button) {
  Impl& d = *m_pImpl;
  if (!d.ValidButton(button)) return;
  d.defaultFocus = button;
  if (IsVisible()) d.FocusDefault();
}

void MessageBox::Show() {
  Impl& d = *m_pImpl;
  if (!d.popup) return;
  evas_object_show(d.popup);
  d.FocusDefault();
  t_StartTimer();
  t_SetVisible(true);  // last: the callback may delete the box
}

void MessageBox::Hide() {
  Impl& d = *m_pImpl;
  if (d.popup) evas_object_hide(d.popup);
  t_StopTimer();
  t_SetVisible(false);  // last: the callback may delete the box
}

void MessageBox::Destroy() {
  // Tearing down is silent: the owner is usually being destroyed itself.
  m_pImpl->ReleaseWidgets();
  for (Impl::Button& b : m_pImpl->buttons) b = Impl::Button();
  m_pImpl->buttonCount = 0;
  TimedWidget::Destroy();
}
