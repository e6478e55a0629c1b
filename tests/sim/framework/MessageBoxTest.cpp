// The platform's confirmation box in a real window on the buffer engine: focus,
// keys, visibility, and an owner that deletes the box from inside the box's own
// callbacks. Its time-out and restart are shown through the program by the tours.
#include <Elementary.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MessageBox.h"
#include "PopupDriver.h"
#include "TimeScale.h"
#include "UiDriver.h"

namespace {

// What the box told its owner: "N/key" per press, "time-out", "shown"/"hidden".
struct Owner {
  std::vector<std::string> told;
  MessageBox* box = nullptr;
  std::string deleteOn;  // "press", "time-out" or "visibility": the owner deletes the box there

  void Tell(const std::string& what, const char* when) {
    told.push_back(what);
    if (deleteOn == when) {
      delete box;
      box = nullptr;
    }
  }
};

template <int N>
bool OnButton(void* data, Evas_Object*, const char* key) {
  static_cast<Owner*>(data)->Tell(std::to_string(N) + "/" + key, "press");
  return true;
}

class MessageBoxTest : public ::testing::Test {
 protected:
  void SetUp() override {
    m_win = elm_win_add(nullptr, "message-box-test", ELM_WIN_BASIC);
    tvtest::ShowOnScreen(m_win);
    tvtest::FocusWindow(m_win);
  }
  void TearDown() override {
    delete m_owner.box;
    evas_object_del(m_win);
    elm_config_mirrored_set(EINA_FALSE);
    unsetenv("TVSIM_TIME_SCALE");
    tvsim::ReloadTimeScaleForTesting();
  }

  // The box as the antenna flow builds it: two buttons, focus on the second.
  MessageBox* Show(int timeOutSecs = 0, const char* message = "Continue?", bool rich = false) {
    delete m_owner.box;
    m_owner = Owner();
    EXPECT_TRUE(tvtest::PumpUntil([&] { return tvtest::FindWidget(m_win, "Elm_Popup") == nullptr; }));
    MessageBox* box = m_owner.box = new MessageBox(false);
    EXPECT_TRUE(box->Create(m_win, 2, TimedWidget::BG_COLOR_WHITE, 0, rich));
    box->SetTitle("Change Antenna");
    box->SetMessage(message);
    box->SetButtonText(1, "Change", nullptr);
    box->SetButtonText(2, "Cancel", nullptr);
    box->SetButtonCallback(1, OnButton<1>, &m_owner);
    box->SetButtonCallback(2, OnButton<2>, &m_owner);
    box->SetDefaultFocus(2);
    box->SetTimeOutSecs(timeOutSecs);
    box->SetTimeOutCallback([](void* data) -> unsigned char {
      static_cast<Owner*>(data)->Tell("time-out", "time-out");
      return 1;
    }, &m_owner);
    box->SetVisibleChangeCallback([](void* data) {
      auto* owner = static_cast<Owner*>(data);
      owner->Tell(owner->box && owner->box->IsVisible() ? "shown" : "hidden", "visibility");
    }, &m_owner);
    box->Show();
    EXPECT_TRUE(tvtest::PumpUntil([&] { return FocusedText() == "Cancel"; }));
    return box;
  }

  std::string FocusedText() const {
    Evas_Object* focused = elm_object_focused_object_get(m_win);
    const char* text = focused ? elm_object_text_get(focused) : nullptr;
    return text ? text : "";
  }

  Evas_Object* m_win = nullptr;
  Owner m_owner;
};

}  // namespace

TEST_F(MessageBoxTest, ShowsItsTextsFocusesTheDefaultButtonAndTheArrowsMoveInTheDisplaysDirection) {
  for (bool mirrored : {false, true}) {
    SCOPED_TRACE(mirrored ? "right to left" : "left to right");
    elm_config_mirrored_set(mirrored ? EINA_TRUE : EINA_FALSE);
    Show(0, mirrored ? "<b>Stops</b>.<br>Continue?" : "Stops. Continue? <1 & 2>", mirrored);
    Evas_Object* popup = tvtest::FindWidget(m_win, "Elm_Popup");
    EXPECT_STREQ("Change Antenna", elm_object_part_text_get(popup, "title,text"));
    Eina_List* column = elm_box_children_get(elm_object_content_get(popup));
    char* plain = elm_entry_markup_to_utf8(elm_object_text_get(static_cast<Evas_Object*>(eina_list_data_get(column))));
    EXPECT_STREQ(mirrored ? "Stops.\nContinue?" : "Stops. Continue? <1 & 2>", plain);
    free(plain);
    eina_list_free(column);
    tvtest::RenderedOnce(m_win);  // laid out: the arrows move by position
    tvtest::PressKey(m_win, mirrored ? "Right" : "Left");
    EXPECT_EQ("Change", FocusedText());
    tvtest::PressKey(m_win, mirrored ? "Left" : "Right");
    EXPECT_EQ("Cancel", FocusedText());
    EXPECT_EQ(std::vector<std::string>{"shown"}, m_owner.told);  // moving is not pressing
  }
}

TEST_F(MessageBoxTest, KeysPressTheFocusedButtonWithTheKeysName) {
  const std::pair<std::vector<const char*>, std::vector<std::string>> rows[] = {
      {{"Return"}, {"shown", "2/Return"}}, {{"Left", "Return"}, {"shown", "1/Return"}},
      {{"XF86Back"}, {"shown", "2/XF86Back"}}, {{"Left", "XF86Back"}, {"shown", "1/XF86Back"}},
      {{"Down", "Up", "a"}, {"shown"}}};
  for (const auto& [keys, told] : rows) {
    SCOPED_TRACE(testing::PrintToString(keys));
    MessageBox* box = Show();
    for (const char* key : keys) tvtest::PressKey(m_win, key);
    EXPECT_EQ(told, m_owner.told);
    EXPECT_TRUE(box->IsVisible());  // answering does not hide: the owner decides
  }
}

TEST_F(MessageBoxTest, TheOwnerMayDeleteTheBoxFromInsideItsCallbacks) {
  tvtest::SetTimeScale("0.005");
  const std::pair<const char*, const char*> rows[] = {  // deleted on, by
      {"press", "Return"}, {"press", "XF86Back"}, {"time-out", ""}, {"visibility", "hide"}};
  for (const auto& [on, by] : rows) {
    SCOPED_TRACE(std::string(on) + " " + by);
    MessageBox* box = Show(10);
    m_owner.deleteOn = on;
    if (std::string(by) == "hide") {
      box->Hide();
    } else if (*by) {
      tvtest::PressKey(m_win, by);
    }
    ASSERT_TRUE(tvtest::PumpUntil([&] { return m_owner.box == nullptr; }));
    // The widgets go from the main loop, after the callback has returned.
    EXPECT_TRUE(tvtest::PumpUntil([&] { return tvtest::FindWidget(m_win, "Elm_Popup") == nullptr; }));
    tvtest::PressKey(m_win, "Return");  // nothing left to answer
    EXPECT_EQ(2u, m_owner.told.size());
  }
}
