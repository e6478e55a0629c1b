// Settings change notification: changes made by other connections and other
// processes arrive on the Ecore main loop, never inside the change itself.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Settings.h"
#include "SettingsTable.h"
#include "SettingsWatch.h"
#include "SimTestUtil.h"
#include "TempTv.h"

namespace {

const char kZoom[] = "db/menu/system/accessibility/focuszoom";
const char kPip[] = "db/menu/picture/pip/onoff";

using Seen = std::vector<std::string>;

void Record(keynode_t* node, void* data) { static_cast<Seen*>(data)->push_back(vconf_keynode_get_name(node)); }

void RemoveSelf(keynode_t* node, void* data) {
  Record(node, data);
  vconf_ignore_key_changed(kZoom, RemoveSelf);
}

}  // namespace

TEST(SettingsWatch, ChangesFromAnotherConnectionAndProcessArriveOnTheLoop) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  Seen seen, once;
  // A callback unregistering itself while notified does not keep the next one from hearing.
  ASSERT_EQ(0, vconf_notify_key_changed(kZoom, RemoveSelf, &once));
  ASSERT_EQ(0, vconf_notify_key_changed(kZoom, Record, &seen));
  ASSERT_EQ(0, vconf_notify_key_changed(kPip, Record, &seen));

  tv.Set(kZoom, "1");
  EXPECT_TRUE(seen.empty());  // never inside the change
  ASSERT_TRUE(simtest::PumpUntil([&] { return seen.size() == 1; }, 10.0));
  EXPECT_EQ(kZoom, seen[0]);

  // Another process: tvctl.
  ASSERT_EQ(0, tv.Run(simtest::Tvctl() + " set " + kPip + " 1"));
  ASSERT_TRUE(simtest::PumpUntil([&] { return seen.size() == 2; }, 10.0));
  EXPECT_EQ(kPip, seen[1]);

  // Writing the same value again is no change; the next real change is the next callback.
  tv.Set(kZoom, "1");
  tv.Set(kPip, "0");
  ASSERT_TRUE(simtest::PumpUntil([&] { return seen.size() >= 3; }, 10.0));
  EXPECT_EQ((std::vector<std::string>{kZoom, kPip, kPip}), seen);

  EXPECT_EQ(0, vconf_ignore_key_changed(kZoom, Record));
  EXPECT_NE(0, vconf_ignore_key_changed(kZoom, Record));  // no longer registered
  tv.Set(kZoom, "2");
  tv.Set(kPip, "1");
  ASSERT_TRUE(simtest::PumpUntil([&] { return seen.size() >= 4; }, 10.0));
  EXPECT_EQ(kPip, seen.back());
  EXPECT_EQ(0, vconf_ignore_key_changed(kPip, Record));
  EXPECT_EQ(Seen{kZoom}, once);
}
