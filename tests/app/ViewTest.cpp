// The view base class: the inactivity time-out of every view. The popups' own
// time-outs are pinned at their boundaries by the tours.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "TimeScale.h"
#include "UiDriver.h"
#include "View.h"

namespace {

// A view with a chosen period that counts what happens to it.
class CountingView : public CView {
 public:
  explicit CountingView(int seconds) : m_nSeconds(seconds) {}
  int nTimeOuts = 0;
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

TEST_F(View, TimesOutRepeatedlyWhileShownUntilHiddenBusyOrDestroyed) {
  CountingView repeats(1), zero(0), negative(-5), hidden(1), once(2), thrice(2), busy(1);
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
  bool deleted = false;
  auto* self = new CountingView(1);  // destroys and deletes itself in its time-out
  self->bDeleteOnTimeOut = true;
  self->pDeleted = &deleted;
  self->Show();
  RunFiveSeconds();
  EXPECT_GE(repeats.nTimeOuts, 2);
  EXPECT_EQ(0, zero.nTimeOuts + negative.nTimeOuts + hidden.nTimeOuts + busy.nTimeOuts);
  EXPECT_LE(thrice.nTimeOuts, once.nTimeOuts + 1);
  EXPECT_TRUE(deleted);

  repeats.Destroy();
  repeats.Hide();
  repeats.Destroy();
  const int afterDestroy = repeats.nTimeOuts;
  hidden.Show();  // a fresh countdown
  ecore_timer_del(activity);
  RunFiveSeconds();  // nothing of the deleted view's may fire any more either
  EXPECT_EQ(afterDestroy, repeats.nTimeOuts);
  EXPECT_GE(hidden.nTimeOuts, 2);
  EXPECT_GE(busy.nTimeOuts, 1);
  for (CountingView* view : {&zero, &negative, &hidden, &once, &thrice, &busy}) view->Destroy();
}

}  // namespace
