// The view base classes: the inactivity time-out of every view, and the popup
// view's toolkit popup in the application window with its focus-zoom scale.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "PopupView.h"
#include "TempTv.h"
#include "TimeScale.h"
#include "UiDriver.h"
#include "Util.h"
#include "View.h"

namespace {

const char kFocusZoomKey[] = "db/menu/system/accessibility/focuszoom";

// A view with a chosen period that counts what happens to it.
class CountingView : public CView {
 public:
  explicit CountingView(int seconds) : m_nSeconds(seconds) {}
  int nTimeOuts = 0;
  int nPauses = 0;
  int nResumes = 0;
  bool bDeleteOnTimeOut = false;
  bool* pDeleted = nullptr;
  ~CountingView() override {
    if (pDeleted) *pDeleted = true;
  }
  void ResetTimeOut() { t_ResetTimeOut(); }

 protected:
  int t_GetTimeOutSeconds() override { return m_nSeconds; }
  void t_OnTimeOut() override {
    ++nTimeOuts;
    if (bDeleteOnTimeOut) {
      Destroy();
      delete this;
    }
  }
  void t_Pause() override { ++nPauses; }
  void t_Resume() override { ++nResumes; }

 private:
  int m_nSeconds;
};

// Time-outs run 50 times faster: one second of a view is 20 ms. Views are
// compared with a 5-second reference view, never with the clock, leaving room
// for a busy machine (a 1-second view times out about five times; two are asked for).
class View : public ::testing::Test {
 protected:
  void SetUp() override {
    setenv("TVSIM_TIME_SCALE", "0.02", 1);
    tvsim::ReloadTimeScaleForTesting();
  }
  void TearDown() override {
    setenv("TVSIM_TIME_SCALE", "1", 1);
    tvsim::ReloadTimeScaleForTesting();
  }
  // Runs the loop until a 5-second reference view has timed out once.
  void RunFiveSeconds() {
    CountingView reference(5);
    reference.Show();
    ASSERT_TRUE(tvtest::PumpUntil([&] { return reference.nTimeOuts >= 1; }));
    reference.Destroy();
  }
};

TEST_F(View, TimesOutRepeatedlyWhileShownUntilHiddenPausedBusyOrDestroyed) {
  CountingView repeats(1), zero(0), negative(-5), hidden(1), once(2), thrice(2), busy(1), paused(1), idle(0);
  for (CountingView* view : {&repeats, &zero, &negative}) {
    view->Create();
    view->Show();
  }
  hidden.Destroy();  // harmless without a timer
  hidden.Show();
  hidden.Hide();
  once.Show();
  for (int i = 0; i < 3; ++i) thrice.Show();  // three timers would time out three times as often
  busy.Show();
  // Activity every half period: the view never times out.
  Ecore_Timer* activity = ecore_timer_loop_add(
      tvsim::Scaled(0.5), [](void* data) -> Eina_Bool {
        static_cast<CountingView*>(data)->ResetTimeOut();
        return ECORE_CALLBACK_RENEW;
      },
      &busy);
  paused.Show();
  paused.OnPause();
  idle.OnPause();
  bool deleted = false;
  auto* self = new CountingView(1);  // destroys and deletes itself in its time-out
  self->bDeleteOnTimeOut = true;
  self->pDeleted = &deleted;
  self->Show();
  RunFiveSeconds();
  EXPECT_GE(repeats.nTimeOuts, 2);
  EXPECT_EQ(0, zero.nTimeOuts + negative.nTimeOuts + hidden.nTimeOuts + busy.nTimeOuts + paused.nTimeOuts);
  EXPECT_LE(thrice.nTimeOuts, once.nTimeOuts + 1);
  EXPECT_TRUE(deleted);

  repeats.Destroy();
  repeats.Hide();
  repeats.Destroy();
  const int afterDestroy = repeats.nTimeOuts;
  hidden.Show();  // a fresh countdown
  ecore_timer_del(activity);
  paused.OnResume();
  idle.OnResume();
  RunFiveSeconds();  // nothing of the deleted view's may fire any more either
  EXPECT_EQ(afterDestroy, repeats.nTimeOuts);
  EXPECT_GE(hidden.nTimeOuts, 2);
  EXPECT_GE(busy.nTimeOuts, 1);
  EXPECT_GE(paused.nTimeOuts, 1);
  // The hooks run with or without a timer.
  EXPECT_EQ(std::vector<int>({1, 1, 1, 1}),
            std::vector<int>({paused.nPauses, paused.nResumes, idle.nPauses, idle.nResumes}));
  for (CountingView* view : {&zero, &negative, &hidden, &once, &thrice, &busy, &paused}) view->Destroy();
}

// A popup view that lets the test see its popup.
class TestPopup : public CPopupView {
 public:
  int nUpdates = 0;
  Evas_Object* Popup() const { return m_pPopup; }
  Evas_Object* Window() const { return m_pWindow; }
  void Update() override {
    CPopupView::Update();
    ++nUpdates;
  }
};

TEST(PopupView, ShowsAndHidesOnePopupInTheApplicationWindowUntilEitherGoes) {
  tvtest::TempTv tv;
  TestPopup view;
  view.Create();
  ASSERT_NE(nullptr, view.Popup());
  EXPECT_EQ(Util::GetWindow(), view.Window());
  EXPECT_EQ(Util::GetWindow(), elm_object_parent_widget_get(view.Popup()));
  EXPECT_STREQ("Elm_Popup", elm_object_widget_type_get(view.Popup()));
  EXPECT_EQ(1, view.nUpdates);  // Create refreshes through the subclass too
  Evas_Object* popup = view.Popup();
  view.Show();
  EXPECT_TRUE(evas_object_visible_get(popup));
  view.Hide();
  EXPECT_FALSE(evas_object_visible_get(popup));
  view.Show();
  EXPECT_EQ(popup, view.Popup());
  EXPECT_TRUE(evas_object_visible_get(popup));
  bool gone = false;
  evas_object_event_callback_add(
      popup, EVAS_CALLBACK_DEL, [](void* data, Evas*, Evas_Object*, void*) { *static_cast<bool*>(data) = true; },
      &gone);
  view.Destroy();
  EXPECT_TRUE(gone);
  EXPECT_EQ(nullptr, view.Popup());
  // A popup taken down with its window is forgotten; the next GetWindow() makes a new window.
  view.Create();
  view.Show();
  evas_object_del(view.Window());
  EXPECT_EQ(nullptr, view.Popup());
  view.Update();
  view.Hide();
  view.Destroy();
  EXPECT_NE(nullptr, Util::GetWindow());
}

TEST(PopupView, FocusZoomScalesThePopupOnly) {
  // value null: the key is missing
  struct Row { nlohmann::json value; double scale; } rows[] = {{1, 1.2}, {7, 1.2}, {0, 1.0}, {-3, 1.0}, {nullptr, 1.0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.value.dump());
    tvtest::TempTv tv;
    nlohmann::json settings = nlohmann::json::object();
    if (!row.value.is_null()) settings[kFocusZoomKey] = row.value;
    tv.Load({{"settings", settings}});
    TestPopup view;
    view.Create();
    EXPECT_DOUBLE_EQ(row.scale, elm_object_scale_get(view.Popup()));
    EXPECT_DOUBLE_EQ(1.0, elm_object_scale_get(view.Window()));
    EXPECT_TRUE(tv.Logged("Update", row.scale > 1.0 ? "enlarge on" : "enlarge off", 0, 5));
    // Changed while the popup exists: Update applies the new value.
    tv.Set(kFocusZoomKey, row.scale > 1.0 ? "0" : "2");
    view.Update();
    EXPECT_DOUBLE_EQ(row.scale > 1.0 ? 1.0 : 1.2, elm_object_scale_get(view.Popup()));
    view.Destroy();
  }
}

}  // namespace
