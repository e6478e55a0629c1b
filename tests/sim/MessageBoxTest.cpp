// The platform's confirmation box in a real window on the buffer engine: focus,
// keys, clicks, the time-out, visibility, and an owner that deletes the box
// from inside the box's own callbacks.
#include <Elementary.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "MessageBox.h"
#include "TimeScale.h"
#include "UiDriver.h"

namespace {

struct Press {
  int button;
  std::string key;
  bool operator==(const Press& o) const { return button == o.button && key == o.key; }
};

std::ostream& operator<<(std::ostream& out, const Press& p) { return out << p.button << "/" << p.key; }

// What the box told its owner.
struct Owner {
  std::vector<Press> presses;
  std::vector<Evas_Object*> objects;
  int timeOuts = 0;
  std::vector<double> timeOutTimes;  // loop time of each
  unsigned char timeOutAnswer = 1;
  std::vector<bool> visibility;
  MessageBox* box = nullptr;
  bool deleteOnPress = false;
  bool deleteOnTimeOut = false;
  bool deleteOnVisibility = false;

  void DeleteBox() {
    delete box;
    box = nullptr;
  }
};

Owner& Reset(Owner& owner) { return owner = Owner(); }

template <int N>
bool OnButton(void* data, Evas_Object* object, const char* key) {
  auto* owner = static_cast<Owner*>(data);
  owner->presses.push_back({N, key ? key : "(null)"});
  owner->objects.push_back(object);
  if (owner->deleteOnPress) owner->DeleteBox();
  return true;
}

unsigned char OnTimeOut(void* data) {
  auto* owner = static_cast<Owner*>(data);
  ++owner->timeOuts;
  owner->timeOutTimes.push_back(ecore_loop_time_get());
  if (owner->deleteOnTimeOut) owner->DeleteBox();
  return owner->timeOutAnswer;
}

void OnVisibility(void* data) {
  auto* owner = static_cast<Owner*>(data);
  owner->visibility.push_back(owner->box ? owner->box->IsVisible() : false);
  if (owner->deleteOnVisibility) owner->DeleteBox();
}

class MessageBoxTest : public ::testing::Test {
 protected:
  void SetUp() override {
    elm_config_mirrored_set(EINA_FALSE);
    m_win = elm_win_add(nullptr, "message-box-test", ELM_WIN_BASIC);
    tvtest::ShowOnScreen(m_win);
    tvtest::FocusWindow(m_win);
  }
  void TearDown() override {
    delete m_owner.box;
    m_owner.box = nullptr;
    evas_object_del(m_win);
    elm_config_mirrored_set(EINA_FALSE);
    unsetenv("TVSIM_TIME_SCALE");
    tvsim::ReloadTimeScaleForTesting();
  }

  // The box as the antenna flow builds it: two buttons, focus on the second.
  MessageBox* MakeBox(int timeOutSecs = 0, bool modal = false, bool rich = false,
                      const char* message = "Recording stops. Continue? <1 & 2>") {
    m_owner.box = new MessageBox(modal);
    MessageBox* box = m_owner.box;
    EXPECT_TRUE(box->Create(m_win, 2, TimedWidget::BG_COLOR_WHITE, 0, rich));
    box->SetTitle("Change Antenna");
    box->SetMessage(message);
    box->SetButtonText(1, "Change", nullptr);
    box->SetButtonText(2, "Cancel", nullptr);
    box->SetButtonCallback(1, OnButton<1>, &m_owner);
    box->SetButtonCallback(2, OnButton<2>, &m_owner);
    box->SetDefaultFocus(2);
    box->SetTimeOutSecs(timeOutSecs);
    box->SetTimeOutCallback(OnTimeOut, &m_owner);
    box->SetVisibleChangeCallback(OnVisibility, &m_owner);
    return box;
  }

  // Deletes the box, forgets what it told its owner, and waits for its widgets to go.
  void DeleteBox() {
    m_owner.DeleteBox();
    Reset(m_owner);
    ASSERT_TRUE(tvtest::PumpUntil([&] { return Popup() == nullptr; }));
  }

  Evas_Object* Popup() const { return tvtest::FindWidget(m_win, "Elm_Popup"); }

  std::string FocusedText() const {
    Evas_Object* focused = elm_object_focused_object_get(m_win);
    const char* text = focused ? elm_object_text_get(focused) : nullptr;
    return text ? text : "";
  }

  // The popup's content is a column: the message, then the row of buttons.
  std::vector<Evas_Object*> ContentOf(Evas_Object* box) const {
    std::vector<Evas_Object*> children;
    Eina_List* list = box ? elm_box_children_get(box) : nullptr;
    void* child;
    EINA_LIST_FREE(list, child) children.push_back(static_cast<Evas_Object*>(child));
    return children;
  }

  Evas_Object* ButtonLabelled(const std::string& label) const {
    const std::vector<Evas_Object*> column = ContentOf(elm_object_content_get(Popup()));
    if (column.size() != 2) return nullptr;
    for (Evas_Object* button : ContentOf(column[1])) {
      const char* text = elm_object_text_get(button);
      if (text && label == text) return button;
    }
    return nullptr;
  }

  void Click(Evas_Object* button) {
    tvtest::RenderedOnce(m_win);  // laid out
    Evas_Coord x, y, w, h;
    evas_object_geometry_get(button, &x, &y, &w, &h);
    Evas* evas = evas_object_evas_get(m_win);
    evas_event_feed_mouse_in(evas, ++m_time, nullptr);
    evas_event_feed_mouse_move(evas, x + w / 2, y + h / 2, ++m_time, nullptr);
    evas_event_feed_mouse_down(evas, 1, EVAS_BUTTON_NONE, ++m_time, nullptr);
    evas_event_feed_mouse_up(evas, 1, EVAS_BUTTON_NONE, ++m_time, nullptr);
    tvtest::RenderedOnce(m_win);
  }

  void UseTimeScale(const char* scale) {
    setenv("TVSIM_TIME_SCALE", scale, 1);
    tvsim::ReloadTimeScaleForTesting();
  }

  Evas_Object* m_win = nullptr;
  Owner m_owner;
  unsigned int m_time = 5000;
};

}  // namespace

TEST_F(MessageBoxTest, ShowsItsTextsWithFocusOnTheDefaultButtonAndArrowsMoveIt) {
  // toButton1: the key that moves from button 2 to button 1; shown: the message's text, markup removed.
  struct Row { const char* name; bool mirrored; const char *toButton1, *toButton2; bool rich;
               const char *message, *shown; };
  const Row rows[] = {
      {"left to right, plain", false, "Left", "Right", false, "Stops. Continue? <1 & 2>", "Stops. Continue? <1 & 2>"},
      {"right to left, rich", true, "Right", "Left", true, "<b>Stops</b>.<br>Continue?", "Stops.\nContinue?"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    elm_config_mirrored_set(row.mirrored ? EINA_TRUE : EINA_FALSE);
    MakeBox(0, false, row.rich, row.message)->Show();
    ASSERT_TRUE(tvtest::RenderedOnce(m_win));
    Evas_Object* popup = Popup();
    ASSERT_NE(nullptr, popup);
    EXPECT_STREQ("Change Antenna", elm_object_part_text_get(popup, "title,text"));
    const std::vector<Evas_Object*> column = ContentOf(elm_object_content_get(popup));
    ASSERT_EQ(2u, column.size());
    char* plain = elm_entry_markup_to_utf8(elm_object_text_get(column[0]));
    EXPECT_STREQ(row.shown, plain);
    free(plain);
    EXPECT_TRUE(tvtest::PumpUntil([&] { return FocusedText() == "Cancel"; }));

    // Button 1 sits at the start edge: on the right when mirrored.
    Evas_Coord x1 = -1, x2 = -1;
    ASSERT_NE(nullptr, ButtonLabelled("Change"));
    ASSERT_NE(nullptr, ButtonLabelled("Cancel"));
    evas_object_geometry_get(ButtonLabelled("Change"), &x1, nullptr, nullptr, nullptr);
    evas_object_geometry_get(ButtonLabelled("Cancel"), &x2, nullptr, nullptr, nullptr);
    EXPECT_EQ(row.mirrored, x1 > x2) << x1 << " " << x2;
    tvtest::SaveScreenshot(m_win, tvtest::ArtefactPath(std::string("MessageBox.") + (row.mirrored ? "Rtl" : "Ltr")));

    tvtest::PressKey(m_win, row.toButton1);
    EXPECT_EQ("Change", FocusedText());
    tvtest::PressKey(m_win, row.toButton2);
    EXPECT_EQ("Cancel", FocusedText());
    EXPECT_TRUE(m_owner.presses.empty());  // moving is not pressing
    DeleteBox();
  }
}

TEST_F(MessageBoxTest, KeysAndClicksPressTheFocusedButtonWithTheKeysNameAndAModalBoxTakesClicksBesideIt) {
  // Something of the application's in the screen's corner, under the box's dimmed area.
  Evas_Object* behind = elm_button_add(m_win);
  evas_object_move(behind, 0, 0);
  evas_object_resize(behind, 200, 100);
  evas_object_show(behind);
  int clickedBehind = 0;
  evas_object_smart_callback_add(
      behind, "clicked", [](void* data, Evas_Object*, void*) { ++*static_cast<int*>(data); }, &clickedBehind);
  // "click:X" clicks the button X, "click:" what is behind the box.
  struct Row { const char* name; bool modal; std::vector<const char*> keys; std::vector<Press> expected;
               int behindClicks; } rows[] = {
      {"select on the default button", false, {"Return"}, {{2, "Return"}}, 0},
      {"select after moving", false, {"Left", "Return"}, {{1, "Return"}}, 0},
      {"back on the default button", false, {"XF86Back"}, {{2, "XF86Back"}}, 0},
      {"back after moving", false, {"Left", "XF86Back"}, {{1, "XF86Back"}}, 0},
      {"other keys press nothing", false, {"Down", "Up", "a"}, {}, 0},
      {"a click counts as select", false, {"click:Change"}, {{1, "Return"}}, 0},
      {"a click beside the box reaches what is behind", false, {"Left", "click:"}, {}, 1},
      {"a modal box takes it and still moves focus", true, {"Left", "Return", "click:"}, {{1, "Return"}}, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    clickedBehind = 0;
    MessageBox* box = MakeBox(0, row.modal);
    box->Show();
    ASSERT_TRUE(tvtest::PumpUntil([&] { return FocusedText() == "Cancel"; }));
    for (const char* key : row.keys) {
      const std::string k = key;
      if (k == "click:") {
        Click(behind);
      } else if (k.rfind("click:", 0) == 0) {
        Click(ButtonLabelled(k.substr(6)));
      } else {
        tvtest::PressKey(m_win, key);
      }
    }
    EXPECT_EQ(row.expected, m_owner.presses);
    EXPECT_EQ(row.behindClicks, clickedBehind);
    for (Evas_Object* object : m_owner.objects) EXPECT_EQ(Popup(), object);
    EXPECT_TRUE(box->IsVisible());  // answering does not hide: the owner decides
    DeleteBox();
  }
}

TEST_F(MessageBoxTest, TimesOutOncePerPeriodAfterTheLastKeyUntilHidden) {
  UseTimeScale("0.05");  // 10 s become 0.5 s
  const double period = 0.5;
  MessageBox* box = MakeBox(10);
  box->Show();
  ASSERT_TRUE(tvtest::PumpUntil([&] { return m_owner.timeOuts == 2; }));
  // Once per period: two timers (one left over from a restart, say) would fire together.
  EXPECT_GT(m_owner.timeOutTimes[1] - m_owner.timeOutTimes[0], period / 2);

  // Keys keep it from timing out: two periods with a key at every pass.
  const int before = m_owner.timeOuts;
  const double start = ecore_time_get();
  for (bool left = true; ecore_time_get() - start < 2 * period; left = !left) {
    tvtest::PressKey(m_win, left ? "Left" : "Right");
  }
  EXPECT_EQ(before, m_owner.timeOuts);
  ASSERT_TRUE(tvtest::PumpUntil([&] { return m_owner.timeOuts == before + 1; }));

  // A callback answering 0 waits for the next key; hiding stops it for good.
  m_owner.timeOutAnswer = 0;
  ASSERT_TRUE(tvtest::PumpUntil([&] { return m_owner.timeOuts == before + 2; }));
  tvtest::PumpUntil([] { return false; }, 2 * period);
  EXPECT_EQ(before + 2, m_owner.timeOuts);
  tvtest::PressKey(m_win, "Left");
  ASSERT_TRUE(tvtest::PumpUntil([&] { return m_owner.timeOuts == before + 3; }));
  box->Hide();
  tvtest::PumpUntil([] { return false; }, 2 * period);
  EXPECT_EQ(before + 3, m_owner.timeOuts);
}

TEST_F(MessageBoxTest, TheOwnerMayDeleteTheBoxFromInsideItsCallbacks) {
  struct Row { const char* name; void (*arm)(Owner&); const char* key; };  // key null: the time-out; "hide": Hide()
  const Row rows[] = {
      {"select", [](Owner& o) { o.deleteOnPress = true; }, "Return"},
      {"back", [](Owner& o) { o.deleteOnPress = true; }, "XF86Back"},
      {"click", [](Owner& o) { o.deleteOnPress = true; }, "click"},
      {"time-out", [](Owner& o) { o.deleteOnTimeOut = true; }, nullptr},
      {"hidden", [](Owner& o) { o.deleteOnVisibility = true; }, "hide"},
  };
  UseTimeScale("0.005");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    MessageBox* box = MakeBox(10);
    box->Show();
    ASSERT_TRUE(tvtest::PumpUntil([&] { return FocusedText() == "Cancel"; }));
    row.arm(m_owner);
    const std::string key = row.key ? row.key : "";
    if (key == "hide") {
      box->Hide();
    } else if (key == "click") {
      Click(ButtonLabelled("Cancel"));
    } else if (!key.empty()) {
      tvtest::PressKey(m_win, row.key);
    }
    ASSERT_TRUE(tvtest::PumpUntil([&] { return m_owner.box == nullptr; }));
    // The widgets go from the main loop, after the callback has returned.
    EXPECT_TRUE(tvtest::PumpUntil([&] { return Popup() == nullptr; }));
    tvtest::PressKey(m_win, "Return");  // nothing left to answer
    EXPECT_LE(m_owner.presses.size(), 1u);
    Reset(m_owner);
  }
}

TEST_F(MessageBoxTest, ReportsEachShowAndHideButTearsDownSilently) {
  MessageBox* box = MakeBox(10);
  box->Show();
  box->Show();
  ASSERT_TRUE(tvtest::RenderedOnce(m_win));
  EXPECT_TRUE(evas_object_visible_get(Popup()));
  box->Hide();
  box->Hide();
  EXPECT_FALSE(evas_object_visible_get(Popup()));
  box->Show();
  EXPECT_TRUE(tvtest::PumpUntil([&] { return FocusedText() == "Cancel"; }));  // focus is back on show
  EXPECT_EQ((std::vector<bool>{true, false, true}), m_owner.visibility);  // IsVisible() as each was told

  box->Destroy();
  box->Destroy();
  EXPECT_FALSE(box->IsVisible());
  EXPECT_EQ(3u, m_owner.visibility.size());
  EXPECT_TRUE(tvtest::PumpUntil([&] { return Popup() == nullptr; }));
  // Made again in a window that goes away before the box does.
  EXPECT_TRUE(box->Create(m_win, 2, TimedWidget::BG_COLOR_WHITE, 0, false));
  box->Show();
  evas_object_del(m_win);
  m_win = elm_win_add(nullptr, "message-box-test", ELM_WIN_BASIC);
  EXPECT_FALSE(box->IsVisible());
  EXPECT_EQ(4u, m_owner.visibility.size());
  box->Hide();
  box->Destroy();
}
