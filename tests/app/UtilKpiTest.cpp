// KPI events as the TV's KPI sink receives them.
#include <gtest/gtest.h>

#include <string>

#include "TempTv.h"
#include "Util.h"

using nlohmann::json;

namespace {

int CallCount(const tvtest::TempTv& tv, const std::string& op) {
  const json shown = tv.Show();  // the loop must not run over a destroyed temporary
  int count = 0;
  for (const json& call : shown["calls"]) count += call.value("op", "") == op;
  return count;
}

TEST(UtilKpi, BuildsNameCodeAndDescriptionOfEachEvent) {
  const int kUnknown = -2;  // no detail flag in the scenario
  struct Row {
    int event;
    const char *a1, *a2, *a3;
    int serviceMode;  // of the current tuning mode; -1: the mode can't be read
    int detail;       // the sink's filter detail setting: 0, 1 or kUnknown
    const char *name, *code, *desc;
    int status;
    bool detailAsked;
  } rows[] = {
      {Util::KPI_LAUNCHEPG, "12", "x", "y", 1, kUnknown, "LAUNCHEPG", "EV001", "{chnum=12}", 1, false},
      {Util::KPI_LAUNCHEPG, "", nullptr, nullptr, 1, kUnknown, "LAUNCHEPG", "EV001", "{chnum=}", 1, false},
      {Util::KPI_LAUNCHEPG, nullptr, "x", "y", 1, kUnknown, "LAUNCHEPG", "EV001", "", 1, false},
      {Util::KPI_NAVIGATION, "up", nullptr, nullptr, 1, kUnknown, "NAVIGATION", "EV006", "{sl_dbtn=up}", 1, false},
      {Util::KPI_NUMBER_INPUT, "remote", nullptr, nullptr, 1, kUnknown, "NUMBER_INPUT", "EV007",
       "{calltype=remote}", 1, false},
      {Util::KPI_PAGE_VIEW_POPUP, "all", "fav", nullptr, 1, kUnknown, "PAGE_VIEW_POPUP", "EV008",
       "{listtype=all;calllisttype=fav}", 1, false},
      {Util::KPI_PAGE_VIEW_POPUP, "all", nullptr, nullptr, 1, kUnknown, "PAGE_VIEW_POPUP", "EV008", "", 1, false},
      {Util::KPI_SELECT_BUTTON, "ok", nullptr, nullptr, 1, kUnknown, "SELECT_BUTTON", "EV009", "{funcitem=ok}", 1,
       false},
      {Util::KPI_SELECTCURRENT, "a", "b", "c", 1, kUnknown, "SELECTCURRENT", "EV012", "", 1, false},
      {Util::KPI_SELECTCH, "a", nullptr, nullptr, 1, kUnknown, "SELECTCH", "EV013", "", 1, false},
      {Util::KPI_TERMINATEEPG, "15", nullptr, nullptr, 1, kUnknown, "TERMINATEEPG", "EV014", "{du=15}", 1, false},
      {Util::KPI_SELECT_ANTENNA, "Cable", "Air", "2", 1, kUnknown, "SELECT_ANTENNA", "EV017",
       "{sl_antenna=Cable;pre_antenna=Air;antennanum=2}", 1, false},
      {Util::KPI_SELECT_ANTENNA, "Cable", "Air", nullptr, 1, kUnknown, "SELECT_ANTENNA", "EV017", "", 1, false},
      {Util::KPI_SL_FILTER, "tv", "radio", "4", 1, 1, "SL_FILTER_A", "EV020",
       "{sl_chfilter=tv;pre_chfilter=radio;filternum=4}", 1, false},
      {Util::KPI_SL_FILTER, "tv", "radio", "4", 3, 0, "SL_FILTER_B", "EV021", "{filternum=4}", 1, true},
      {Util::KPI_SL_FILTER, "tv", "radio", "4", 3, kUnknown, "SL_FILTER_B", "EV021", "{filternum=4}", 1, true},
      {Util::KPI_SL_FILTER, "tv", "radio", "4", 3, 1, "SL_FILTER_B", "EV021",
       "{sl_chfilter=tv;pre_chfilter=radio;filternum=4}", 1, true},
      {Util::KPI_SL_FILTER, "tv", nullptr, "4", 3, 0, "SL_FILTER_B", "EV021", "", 1, false},
      {Util::KPI_SL_FILTER, "tv", "radio", "4", -1, 0, "SL_FILTER_A", "EV020",
       "{sl_chfilter=tv;pre_chfilter=radio;filternum=4}", 1, false},
      {Util::KPI_SL_OSD_FILTER, "a", "b", "9", 7, 0, "SL_OSD_FILTER_A", "EV022",
       "{sl_chfilter=a;pre_chfilter=b;filternum=9}", 1, false},
      {Util::KPI_SL_OSD_FILTER, "a", "b", "9", 3, 0, "SL_OSD_FILTER_B", "EV023", "{filternum=9}", 1, true},
      {Util::KPI_SL_OSD_FILTER, "a", "b", "9", 3, 1, "SL_OSD_FILTER_B", "EV023",
       "{sl_chfilter=a;pre_chfilter=b;filternum=9}", 1, true},
      {11, "a", "b", "c", 3, 1, "", "", "", -1, false},
      {-1, "a", "b", "c", 3, 1, "", "", "", -1, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE("event " + std::to_string(row.event) + " " + row.desc);
    tvtest::TempTv tv;
    json scenario = {{"tv_mode", {{"antenna", 2}, {"service", row.serviceMode == -1 ? 3 : row.serviceMode}}}};
    if (row.detail != kUnknown) scenario["settings"] = {{"kpi/filter_detail", row.detail == 1}};
    tv.Load(scenario);
    if (row.serviceMode == -1) tv.AddFault({{"op", "GetTvMode"}, {"result", 0}});
    Util::KPILogging(static_cast<Util::KPI_EVENT>(row.event), row.a1, row.a2, row.a3);
    const json events = tv.Show()["kpi_events"];
    ASSERT_EQ(1u, events.size());
    EXPECT_EQ(row.name, events[0]["event"]);
    EXPECT_EQ(row.code, events[0]["code"]);
    EXPECT_EQ(row.desc, events[0]["desc"]);
    EXPECT_EQ(row.status, events[0]["status"]);
    EXPECT_EQ(row.detailAsked ? 1 : 0, CallCount(tv, "IsFilterDetailEnabled"));
    const std::string line = std::string("strEventName = ") + row.name + ", strCategory = " + row.code +
                             ", strDesc = " + row.desc;
    EXPECT_TRUE(tv.Logged("KPILogging", line, 0, 5)) << line;
  }
}

TEST(UtilKpi, DropsTheEventWhenTheSinkIsMissing) {
  tvtest::TempTv tv;
  tv.AddFault({{"op", "GetVirtualChannelsAPI"}, {"null", true}});
  EXPECT_EQ(0, Util::KPILogging(Util::KPI_SELECT_ANTENNA, "Cable", "Air", "2"));
  EXPECT_TRUE(tv.Show()["kpi_events"].empty());
  EXPECT_EQ(std::vector<std::string>{"Assertion failed."}, tv.AppMessages());
  EXPECT_TRUE(tv.Logged("KPILogging", "Assertion failed.", 2, 5));
}

}  // namespace
