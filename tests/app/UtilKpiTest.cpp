// KPI events as the TV's KPI sink receives them.
#include "UtilTestUtil.h"

namespace {

using namespace utiltest;
using namespace Util;

TEST(UtilKpi, BuildsNameCodeAndDescriptionOfEachEvent) {
  const int kUnset = -2;  // no detail flag in the scenario
  const char* const kFull = "{sl_chfilter=tv;pre_chfilter=radio;filternum=4}";
  // mode: service mode of the current tuning mode, -1 when it can't be read; detail: the sink's setting.
  struct Row { int event; const char *a1, *a2, *a3; int mode, detail; const char *name, *code, *desc; int status;
               bool detailAsked; } rows[] = {
      {KPI_LAUNCHEPG, "12", "x", "y", 1, kUnset, "LAUNCHEPG", "EV001", "{chnum=12}", 1, false},
      {KPI_LAUNCHEPG, "", nullptr, nullptr, 1, kUnset, "LAUNCHEPG", "EV001", "{chnum=}", 1, false},
      {KPI_LAUNCHEPG, nullptr, "x", "y", 1, kUnset, "LAUNCHEPG", "EV001", "", 1, false},
      {KPI_NAVIGATION, "up", nullptr, nullptr, 1, kUnset, "NAVIGATION", "EV006", "{sl_dbtn=up}", 1, false},
      {KPI_NUMBER_INPUT, "remote", nullptr, nullptr, 1, kUnset, "NUMBER_INPUT", "EV007", "{calltype=remote}", 1, false},
      {KPI_PAGE_VIEW_POPUP, "all", "fav", nullptr, 1, kUnset, "PAGE_VIEW_POPUP", "EV008",
       "{listtype=all;calllisttype=fav}", 1, false},
      {KPI_PAGE_VIEW_POPUP, "all", nullptr, nullptr, 1, kUnset, "PAGE_VIEW_POPUP", "EV008", "", 1, false},
      {KPI_SELECT_BUTTON, "ok", nullptr, nullptr, 1, kUnset, "SELECT_BUTTON", "EV009", "{funcitem=ok}", 1, false},
      {KPI_SELECTCURRENT, "a", "b", "c", 1, kUnset, "SELECTCURRENT", "EV012", "", 1, false},
      {KPI_SELECTCH, "a", nullptr, nullptr, 1, kUnset, "SELECTCH", "EV013", "", 1, false},
      {KPI_TERMINATEEPG, "15", nullptr, nullptr, 1, kUnset, "TERMINATEEPG", "EV014", "{du=15}", 1, false},
      {KPI_SELECT_ANTENNA, "Cable", "Air", "2", 1, kUnset, "SELECT_ANTENNA", "EV017",
       "{sl_antenna=Cable;pre_antenna=Air;antennanum=2}", 1, false},
      {KPI_SELECT_ANTENNA, "Cable", "Air", nullptr, 1, kUnset, "SELECT_ANTENNA", "EV017", "", 1, false},
      {KPI_SL_FILTER, "tv", "radio", "4", 1, 1, "SL_FILTER_A", "EV020", kFull, 1, false},
      {KPI_SL_FILTER, "tv", "radio", "4", 3, 0, "SL_FILTER_B", "EV021", "{filternum=4}", 1, true},
      {KPI_SL_FILTER, "tv", "radio", "4", 3, kUnset, "SL_FILTER_B", "EV021", "{filternum=4}", 1, true},
      {KPI_SL_FILTER, "tv", "radio", "4", 3, 1, "SL_FILTER_B", "EV021", kFull, 1, true},
      {KPI_SL_FILTER, "tv", nullptr, "4", 3, 0, "SL_FILTER_B", "EV021", "", 1, false},
      {KPI_SL_FILTER, "tv", "radio", "4", -1, 0, "SL_FILTER_A", "EV020", kFull, 1, false},
      {KPI_SL_OSD_FILTER, "a", "b", "9", 7, 0, "SL_OSD_FILTER_A", "EV022", "{sl_chfilter=a;pre_chfilter=b;filternum=9}",
       1, false},
      {KPI_SL_OSD_FILTER, "a", "b", "9", 3, 0, "SL_OSD_FILTER_B", "EV023", "{filternum=9}", 1, true},
      {KPI_SL_OSD_FILTER, "a", "b", "9", 3, 1, "SL_OSD_FILTER_B", "EV023", "{sl_chfilter=a;pre_chfilter=b;filternum=9}",
       1, true},
      {11, "a", "b", "c", 3, 1, "", "", "", -1, false},
      {-1, "a", "b", "c", 3, 1, "", "", "", -1, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE("event " + std::to_string(row.event) + " " + row.desc);
    json scenario = {{"tv_mode", {{"antenna", 2}, {"service", row.mode == -1 ? 3 : row.mode}}}};
    if (row.detail != kUnset) scenario["settings"] = {{"kpi/filter_detail", row.detail == 1}};
    auto tv = Tv(scenario, row.mode == -1 ? json{{"op", "GetTvMode"}, {"result", 0}} : json());
    KPILogging(static_cast<KPI_EVENT>(row.event), row.a1, row.a2, row.a3);
    const json events = tv->Show()["kpi_events"];
    ASSERT_EQ(1u, events.size());
    EXPECT_EQ(json({row.name, row.code, row.desc, row.status}),
              json({events[0]["event"], events[0]["code"], events[0]["desc"], events[0]["status"]}));
    EXPECT_EQ(row.detailAsked ? 1 : 0, tv->CallCount("IsFilterDetailEnabled"));
    const std::string line =
        std::string("strEventName = ") + row.name + ", strCategory = " + row.code + ", strDesc = " + row.desc;
    EXPECT_TRUE(tv->Logged("KPILogging", line, 0, 5)) << line;
  }
}

TEST(UtilKpi, DropsTheEventWhenTheSinkIsMissing) {
  auto tv = Tv(json::object(), {{"op", "GetVirtualChannelsAPI"}, {"null", true}});
  EXPECT_EQ(0, KPILogging(KPI_SELECT_ANTENNA, "Cable", "Air", "2"));
  EXPECT_TRUE(tv->Show()["kpi_events"].empty());
  EXPECT_EQ(std::vector<std::string>{"Assertion failed."}, tv->AppMessages());
  EXPECT_TRUE(tv->Logged("KPILogging", "Assertion failed.", 2, 5));
}

}  // namespace
