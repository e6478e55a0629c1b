// tvctl recorder-event as people and scripts use it: bad words are refused with
// exit status 2 and nothing sent; good ones are stored for the running
// applications with their words as given (signed, or as unsigned bits).
#include <gtest/gtest.h>

#include "../sim/SimTestUtil.h"
#include "TempTv.h"

using nlohmann::json;

TEST(TvctlRecorderEvent, RefusesBadWordsAndStoresGoodOnesAsGiven) {
  tvtest::TempTv tv;
  const std::string tvctl = simtest::Tvctl();
  const std::pair<const char*, const char*> refused[] = {
      {"recorder-event", "missing arguments"},
      {"recorder-event 1", "missing arguments"},
      {"recorder-event x 1", "not a number"},
      {"recorder-event 1 1 4294967296", "not a 32-bit word"},
      {"recorder-event 1 1 -2147483649", "not a 32-bit word"},
      {"recorder-event 1 1 1 2 3 4 5 6", "too many arguments"},
  };
  for (const auto& row : refused) {
    SCOPED_TRACE(row.first);
    std::string err;
    EXPECT_EQ(2, tv.Run(tvctl + " " + row.first + " 2>&1 >/dev/null", &err));
    EXPECT_NE(std::string::npos, err.find(row.second)) << err;
  }
  EXPECT_TRUE(tv.Show()["recorder_events"].empty());

  std::string out;
  ASSERT_EQ(0, tv.Run(tvctl + " recorder-event --help", &out));
  EXPECT_NE(std::string::npos, out.find("usage: tvctl recorder-event")) << out;
  ASSERT_EQ(0, tv.Run(tvctl + " recorder-event 1 1 8388610 -1 4294967295"));
  ASSERT_EQ(0, tv.Run(tvctl + " recorder-event -7 0"));
  const json events = tv.Show()["recorder_events"];
  ASSERT_EQ(2u, events.size());
  EXPECT_EQ(json({1, 1, json({8388610, -1, -1, 0, 0})}), json({events[0]["event"], events[0]["result"], events[0]["data"]}));
  EXPECT_EQ(json({-7, 0, json({0, 0, 0, 0, 0})}), json({events[1]["event"], events[1]["result"], events[1]["data"]}));
  EXPECT_LT(events[0]["seq"].get<int64_t>(), events[1]["seq"].get<int64_t>());
}
