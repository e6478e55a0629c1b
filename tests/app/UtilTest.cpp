// The utilities' rules that vary only in data, against a simulated TV: the
// service mode of a country, which tuning modes the list offers, the tuners a
// recording leaves, channel numbers and names, KPI events. Their failures are
// the fault matrix's (PopupFaultMatrixTest), their use the popups'.
#include <gtest/gtest.h>

#include <memory>

#include "TempTv.h"
#include "Util.h"

namespace {

using nlohmann::json;

const char kSaAtvKey[] = "com.velmora/featureconf/broadcasting.antenna_selection_util.service_mode_for_sa_atv";
const char kPvrKey[] = "com.velmora/featureconf/pvr.pvr_support";
const char kPip[] = "db/menu/picture/pip/onoff";
const char kConnection[] = "db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType";

TvMode Mode(int antenna, int service) { return TvMode(AntennaMode(antenna), ServiceMode(service)); }

// A service in navigation list 1; `extra` overrides any member.
json Service(int id, int antenna = 0, int service = 1, const json& extra = json::object()) {
  json s = {{"id", id}, {"antenna", antenna}, {"service", service}, {"major", id % 1000}, {"minor", 0},
            {"kind", 0}, {"name", "Service"}, {"navigation", {1}}};
  s.update(extra);
  return s;
}

json Profile(int id, int antenna, int service) {
  return {{"enabled", true}, {"profile_id", id}, {"operator_name", "Operator"}, {"operator_code", "OP"},
          {"antenna_modes", {2}}, {"tv_mode", {{"antenna", antenna}, {"service", service}}}, {"network_id", 1},
          {"satellite_id", 2}, {"visible", true}, {"priority", 0}, {"country", "X"}, {"language", "en"},
          {"logo_path", ""}, {"regional", false}, {"description", ""}};
}

// A fresh TV holding `scenario`, nothing cached from an earlier one.
std::unique_ptr<tvtest::TempTv> Tv(const json& scenario) {
  Util::ResetCachesForTesting();
  auto tv = std::make_unique<tvtest::TempTv>();
  tv->Load(scenario);
  return tv;
}

// Country 1 gives the non-satellite antennas service mode 21; satellite is allowed.
json ListTv(std::pair<int, int> tuned, json services, json profiles = json::array(), json extra = json::object()) {
  json settings = {{"system_settings/57", 1}, {kSaAtvKey, false}, {kPip, 0}, {kConnection, true},
                   {"db/mls/mls_focus", 0}, {"memory/mls/state", 0}};
  settings.update(extra);
  return {{"tv_mode", {{"antenna", tuned.first}, {"service", tuned.second}}}, {"services", services},
          {"profiles", profiles}, {"settings", settings}};
}

std::string List() {
  std::vector<TvMode> list;
  Util::GetAntennaList(list);
  std::string text;
  for (const TvMode& m : list) text += "(" + std::to_string(m.antennaMode) + "," + std::to_string(m.serviceMode) + ")";
  return text;
}

TEST(Util, ServiceModeFollowsTheCountryTableAndTheFeatureKeyAndIsKeptOnceComputed) {
  struct Row { json settings; int expected; };
  std::vector<Row> rows = {{{{"system_settings/57", 1}, {kSaAtvKey, true}}, 2},
                           {{{"system_settings/57", -1}, {kSaAtvKey, true}}, -1},
                           {{{kSaAtvKey, true}}, -1},
                           {{{"system_settings/57", 2}}, -1}};
  const std::pair<int, int> countries[] = {
      {0, 0},  {2, 0},  {1, 21}, {36, 21}, {63, 21}, {75, 21}, {34, 2},  {64, 2}, {65, 2}, {67, 2}, {69, 2}, {70, 2},
      {71, 2}, {72, 2}, {73, 2}, {74, 2},  {80, 2},  {85, 2},  {3, 1},   {33, 1}, {35, 1}, {66, 1}, {68, 1}, {76, 1},
      {79, 1}, {84, 1}, {86, 1}, {500, 1}, {-5, 1},  {-2, 1}};
  for (const auto& [country, expected] : countries) rows.push_back({{{"system_settings/57", country}, {kSaAtvKey, false}}, expected});
  for (const Row& row : rows) {
    SCOPED_TRACE(row.settings.dump());
    auto tv = Tv({{"settings", row.settings}});
    EXPECT_EQ(row.expected, Util::GetServiceMode());
    EXPECT_EQ(row.expected == -1, tv->Logged("GetServiceMode", "get region or country failed", 2, 5));
  }
  // A failed computation is not kept; a computed mode is, for the process, and the list uses it.
  auto tv = Tv(ListTv({0, 21}, {Service(1, 0, 21), Service(2, 0, 1)}, json::array(), {{"system_settings/57", -1}}));
  EXPECT_EQ(-1, Util::GetServiceMode());
  tv->Set("system_settings/57", "1");
  EXPECT_EQ("(0,21)", List());
  tv->Set("system_settings/57", "3");  // would give service mode 1
  EXPECT_EQ(21, Util::GetServiceMode());
  EXPECT_EQ("(0,21)", List());
}

TEST(Util, TheListOffersModesWithServicesInCandidateOrderThenNewProfilesAndTheCurrentMode) {
  auto tv = Tv(ListTv({0, 21},
                      {Service(201, 1, 21), Service(202, 0, 21), Service(203, 2, 52), Service(204, 2, 3),
                       Service(205, 2, 5), Service(206, 0, 1), Service(207, 2, 30), Service(208, 2, 20),
                       Service(209, 2, 19), Service(210, 2, 2), Service(211, 2, 21)},
                      {Profile(1, 2, 30), Profile(2, 2, 20), Profile(3, 0, 21), Profile(4, 2, 20), Profile(5, 2, 19),
                       Profile(6, 1, 5)}));
  // 2, 19, 20 and 21 are no satellite service modes; profiles need services of their own.
  EXPECT_EQ("(0,21)(1,21)(2,3)(2,5)(2,30)(2,52)(2,20)(2,19)", List());
  const std::pair<json, const char*> rows[] = {
      {ListTv({1, 21}, json::array()), "(1,21)"},
      {ListTv({2, 7}, {Service(1, 2, 9), Service(2, 2, 3)}), "(2,3)(2,7)(2,9)"},
      {ListTv({2, 19}, {Service(1, 2, 2), Service(2, 2, 19), Service(3, 2, 20), Service(4, 2, 21)}), ""},
      {ListTv({2, 20}, json::array(), {Profile(1, 2, 20)}), ""},
      {ListTv({0, 1}, {Service(1, 1, 21)}), "(1,21)"},
      // Satellite withheld: even the current satellite mode goes.
      {ListTv({2, 7}, {Service(1, 0, 21), Service(2, 2, 3)}, json::array(), {{kPip, 1}, {kConnection, false}}), "(0,21)"},
  };
  for (const auto& [scenario, expected] : rows) {
    SCOPED_TRACE(scenario["tv_mode"].dump());
    auto other = Tv(scenario);
    EXPECT_EQ(expected, List());
  }
}

TEST(Util, SatelliteIsWithheldOnlyForPictureInPictureOnASingleConnectionTunedToSatellite) {
  const json sat = {{"antenna", 2}, {"service", 5}}, air = {{"antenna", 0}, {"service", 21}};
  const json single = {{kPip, 1}, {kConnection, false}};
  auto with = [&](json extra) { json s = single; s.update(extra); return s; };
  // The screen whose mode counts: 1 in multi-screen mode with the focus on it, else 0.
  struct Row { json screen0, screen1, settings; bool supported; } rows[] = {
      {sat, air, single, false},
      {sat, air, with({{kPip, 2}}), true},
      {sat, air, with({{kPip, 0}}), true},
      {sat, air, with({{kConnection, true}}), true},
      {air, sat, single, true},
      {air, sat, with({{"db/mls/mls_focus", 2}, {"memory/mls/state", 1}}), false},
      {air, sat, with({{"db/mls/mls_focus", 2}, {"memory/mls/state", 0}}), true},
      {air, sat, with({{"db/mls/mls_focus", 1}, {"memory/mls/state", 1}}), true},
      {sat, air, {{kConnection, false}}, true},  // unreadable settings count as supported
      {sat, air, {{kPip, 1}}, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.screen0.dump() + row.settings.dump());
    json screen1 = row.screen1;
    screen1["screen"] = 1;
    auto tv = Tv({{"tv_mode", row.screen0}, {"screens", {screen1}}, {"settings", row.settings}});
    EXPECT_EQ(row.supported, Util::m_IsSupportSatelliteAntenna());
  }
}

TEST(Util, RecordingsCountOnlyOnATvThatRecordsAndTwoTunersCountAsOneOnASingleSatelliteConnection) {
  const json sat = {{"antenna", 2}, {"service", 5}}, air = {{"antenna", 0}, {"service", 21}};
  auto settings = [](json tuners, json recordable, json connection) {  // null: the key is missing
    json s = {{kPvrKey, true}};
    if (!tuners.is_null()) s["system_info/18"] = tuners;
    if (!recordable.is_null()) s["system_info/238"] = recordable;
    if (!connection.is_null()) s[kConnection] = connection;
    return s;
  };
  struct Row { json tuned, settings; int tuners, recordable; } rows[] = {
      {sat, settings(2, 2, false), 1, 1},     {sat, settings(2, 2, true), 2, 2},   {air, settings(2, 2, false), 2, 2},
      {sat, settings(3, 3, false), 3, 3},     {sat, settings(3, 1, false), 3, 1},  {air, settings(1, 2, nullptr), 1, 1},
      {sat, settings(nullptr, 2, false), 0, 0}, {sat, settings(2, 2, nullptr), 2, 2},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.tuned.dump() + row.settings.dump());
    auto tv = Tv({{"tv_mode", row.tuned}, {"settings", row.settings}});
    EXPECT_EQ(row.tuners, Util::m_TunerNumWithSingleSatelite());
    EXPECT_EQ(row.recordable, Util::NumOfRecordableTuner());
  }
  // pvr: the feature key, null when missing.
  const std::tuple<json, json, int> counts[] = {
      {true, json::array(), 0}, {true, {4097}, 1}, {true, {4097, 4098}, 2}, {false, {4097}, 0}, {nullptr, {4097}, 0}};
  for (const auto& [pvr, recordings, expected] : counts) {
    SCOPED_TRACE(pvr.dump() + recordings.dump());
    json services = json::array();
    for (const json& id : recordings) services.push_back(Service(id.get<int>()));
    auto tv = Tv({{"services", services}, {"recordings", recordings},
                  {"settings", pvr.is_null() ? json::object() : json{{kPvrKey, pvr}}}});
    EXPECT_EQ(expected, Util::PvrRecording(true));
    EXPECT_EQ(pvr == true ? 1 : 0, tv->CallCount("rec_get_recording_service_id_list"));
  }
  // A failed query counts as no recording, whatever the recorder wrote.
  auto tv = Tv({{"services", {Service(4097)}}, {"recordings", {4097}}, {"settings", {{kPvrKey, true}}}});
  tv->AddFault({{"op", "rec_get_recording_service_id_list"}, {"result", -7}, {"keep_outputs", true}});
  EXPECT_EQ(0, Util::PvrRecording(true));
  // Recording support is read again only after a failed read.
  tv->ClearFaults();
  tv->AddFault({{"op", "system_info_get_custom_bool"}, {"result", -1}, {"nth", 1}});
  Util::ResetCachesForTesting();
  EXPECT_FALSE(Util::IsPvrSupport());
  EXPECT_TRUE(Util::IsPvrSupport());
  tv->Set(kPvrKey, "false");
  EXPECT_TRUE(Util::IsPvrSupport());
}

TEST(Util, ChannelNumbersNamesAndListIndexes) {
  auto tv = Tv({{"tv_mode", {{"antenna", 0}, {"service", 1}}},
                {"number_formats", {{"1", "{major}-{minor}"}, {"-1", "any {major}.{minor}"}}},
                {"services", {Service(4097, 0, 1, {{"name", "Channel Five"}}), Service(4098, 0, 1, {{"name", "abc\nd"}}),
                              Service(4099, 0, 1, {{"name", "\n\r\n"}}), Service(4100, 0, 1, {{"name", "Ελληνικά Νέα"}})}}});
  auto record = [](std::initializer_list<std::pair<int, uint64_t>> attributes) {
    ServiceData data;
    auto table = std::make_unique<ServiceAttributeTable>();
    for (const auto& [id, value] : attributes) table->SetAttribute(id, value);
    data.SetAttributeTable(std::move(table));
    return data;
  };
  std::vector<std::pair<ServiceData, const char*>> numbers;
  numbers.emplace_back(record({{13, 5}, {14, 1}, {1, 1}}), "5-1");
  numbers.emplace_back(record({{13, 5}, {1, 1}}), "5-65535");
  numbers.emplace_back(record({{13, 7}, {14, 2}}), "any 7.2");
  numbers.emplace_back(record({{13, 0x1FFFF}, {14, 3}, {1, 1}}), "65535-3");
  numbers.emplace_back(record({{13, 0xFFFFFFFF}, {14, 1}}), "");  // all ones: no number
  numbers.emplace_back(record({{14, 1}, {1, 1}}), "");
  numbers.emplace_back(ServiceData(), "");
  for (auto& [data, expected] : numbers) {
    EXPECT_EQ(expected, Util::GetServiceNumberString(Mode(0, 1), &data));
    EXPECT_EQ(expected, Util::GetServiceNumberString(&data));
  }
  // Names lose their line breaks, which the middleware stores as big-endian UTF-16.
  const std::pair<uint64_t, const char*> names[] = {
      {4097, "Channel Five"}, {4098, "abcd"}, {4099, ""}, {4100, "Ελληνικά Νέα"}, {777, ""}};
  for (const auto& [id, expected] : names) {
    ServiceData data = record({{ATTR_SERVICE_ID, id}});
    EXPECT_EQ(expected, Util::GetServiceName(&data));
  }
  // A carriage return stored little-endian (bytes 0D 00) is U+0D00, not a break.
  std::u16string text = u"a";
  for (char16_t& unit : text) unit = static_cast<char16_t>(unit << 8);
  text += static_cast<char16_t>(0x000D);
  EXPECT_EQ("a\xE0\xB4\x80", Util::Twstring2String(text));

  Evas_Object* win = elm_win_add(nullptr, "index-test", ELM_WIN_BASIC);
  Evas_Object* list = elm_genlist_add(win);
  Elm_Genlist_Item_Class* itc = elm_genlist_item_class_new();
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(i, Util::GetGenlistItemIndex(
                     elm_genlist_item_append(list, itc, nullptr, nullptr, ELM_GENLIST_ITEM_NONE, nullptr, nullptr)));
  }
  EXPECT_EQ(-1, Util::GetGenlistItemIndex(nullptr));
  elm_genlist_item_class_free(itc);
  evas_object_del(win);
}

TEST(Util, KpiEventsCarryNameCodeDescriptionAndStatus) {
  using namespace Util;
  const char* const kFull = "{sl_chfilter=tv;pre_chfilter=radio;filternum=4}";
  // mode: service mode of the current tuning mode; detail: the sink's setting (-2: none).
  struct Row { int event; const char *a1, *a2, *a3; int mode, detail; const char *name, *code, *desc; int status; } rows[] = {
      {KPI_LAUNCHEPG, "12", "x", "y", 1, -2, "LAUNCHEPG", "EV001", "{chnum=12}", 1},
      {KPI_LAUNCHEPG, nullptr, "x", "y", 1, -2, "LAUNCHEPG", "EV001", "", 1},
      {KPI_PAGE_VIEW_POPUP, "all", "fav", nullptr, 1, -2, "PAGE_VIEW_POPUP", "EV008", "{listtype=all;calllisttype=fav}", 1},
      {KPI_SELECTCURRENT, "a", "b", "c", 1, -2, "SELECTCURRENT", "EV012", "", 1},
      {KPI_TERMINATEEPG, "15", nullptr, nullptr, 1, -2, "TERMINATEEPG", "EV014", "{du=15}", 1},
      {KPI_SELECT_ANTENNA, "Cable", "Air", "2", 1, -2, "SELECT_ANTENNA", "EV017",
       "{sl_antenna=Cable;pre_antenna=Air;antennanum=2}", 1},
      {KPI_SELECT_ANTENNA, "Cable", "Air", nullptr, 1, -2, "SELECT_ANTENNA", "EV017", "", 1},
      {KPI_SL_FILTER, "tv", "radio", "4", 1, 1, "SL_FILTER_A", "EV020", kFull, 1},
      {KPI_SL_FILTER, "tv", "radio", "4", 3, 0, "SL_FILTER_B", "EV021", "{filternum=4}", 1},
      {KPI_SL_FILTER, "tv", "radio", "4", 3, 1, "SL_FILTER_B", "EV021", kFull, 1},
      {KPI_SL_OSD_FILTER, "a", "b", "9", 2, 0, "SL_OSD_FILTER_A", "EV022", "{sl_chfilter=a;pre_chfilter=b;filternum=9}", 1},
      {KPI_SL_OSD_FILTER, "a", "b", "9", 3, 0, "SL_OSD_FILTER_B", "EV023", "{filternum=9}", 1},
      {11, "a", "b", "c", 3, 1, "", "", "", -1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE("event " + std::to_string(row.event) + " " + row.desc);
    json scenario = {{"tv_mode", {{"antenna", 2}, {"service", row.mode}}}};
    if (row.detail != -2) scenario["settings"] = {{"kpi/filter_detail", row.detail == 1}};
    auto tv = Tv(scenario);
    KPILogging(static_cast<KPI_EVENT>(row.event), row.a1, row.a2, row.a3);
    const json events = tv->Show()["kpi_events"];
    ASSERT_EQ(1u, events.size());
    EXPECT_EQ(json({row.name, row.code, row.desc, row.status}),
              json({events[0]["event"], events[0]["code"], events[0]["desc"], events[0]["status"]}));
  }
}

TEST(Util, TheWindowIsOneTransparentDialogAndFocusZoomIsOnForPositiveValues) {
  tvtest::TempTv tv;
  Evas_Object* window = Util::GetWindow();
  ASSERT_NE(nullptr, window);
  EXPECT_EQ(window, Util::GetWindow());
  EXPECT_EQ(ELM_WIN_DIALOG_BASIC, elm_win_type_get(window));
  EXPECT_TRUE(elm_win_alpha_get(window) && elm_win_autodel_get(window) && evas_object_visible_get(window));
  evas_object_del(window);  // once the toolkit deletes it, the next call makes a new one
  EXPECT_NE(nullptr, Util::GetWindow());
  const std::pair<json, bool> rows[] = {{1, true}, {7, true}, {0, false}, {-3, false}, {nullptr, false}};
  for (const auto& [value, enlarged] : rows) {
    SCOPED_TRACE(value.dump());
    auto zoom = Tv({{"settings", value.is_null() ? json::object() : json{{"db/menu/system/accessibility/focuszoom", value}}}});
    EXPECT_EQ(enlarged, Util::IsEnlarge());
  }
}

}  // namespace
