// The port's result conventions on the simulated TV: each operation's own
// success value, and outputs left as the caller preset them on failure.
#include <optional>

#include "Recorder.h"
#include "ServiceHub.h"
#include "Settings.h"
#include "SimTestUtil.h"
#include "TempTv.h"

using nlohmann::json;

namespace {

Navigator* Open(ProfileKind profile, int index) {
  Navigator* navigator = nullptr;
  return ServiceHub::OpenNavigator(profile, index, &navigator) == 0 ? navigator : nullptr;
}

TvMode Mode(int antenna, int service) { return TvMode(AntennaMode(antenna), ServiceMode(service)); }

const ServiceAttributeValue* Attr(const ServiceData& data, int id) { return data.GetAttributeTable()->GetAttribute(id); }

}  // namespace

TEST(Port, EachScreenHasItsNavigatorAndMode) {
  tvtest::TempTv tv;
  json scenario = simtest::ReadScenario("sample.json");
  scenario["screens"] = {{{"screen", 1}, {"antenna", 2}, {"service", 3}}};
  tv.Load(scenario);
  struct Row { ProfileKind profile; int index; TvMode expected; } rows[] = {
      {PROFILE_MAIN, 0, Mode(0, 21)}, {PROFILE_SCREEN, 0, Mode(0, 21)}, {PROFILE_SCREEN, 1, Mode(2, 3)},
      {PROFILE_SCREEN, 2, Mode(0, 21)}};  // screen 2 has no mode of its own
  for (const Row& row : rows) {
    SCOPED_TRACE(std::to_string(row.profile) + "/" + std::to_string(row.index));
    Navigator* navigator = Open(row.profile, row.index);
    ASSERT_NE(nullptr, navigator);
    TvMode mode;
    EXPECT_EQ(1, navigator->GetTvMode(mode));
    EXPECT_EQ(row.expected, mode);
  }
  Navigator* sentinel = reinterpret_cast<Navigator*>(0x1);
  for (auto [profile, index] : {std::pair{PROFILE_MAIN, 1}, std::pair{PROFILE_SCREEN, -1}, std::pair{ProfileKind(7), 0}}) {
    Navigator* navigator = sentinel;
    EXPECT_NE(0, ServiceHub::OpenNavigator(profile, index, &navigator));
    EXPECT_EQ(sentinel, navigator);
  }
  // Setting the mode of screen 1 leaves screen 0 alone and is recorded as a tuning change.
  EXPECT_GT(Open(PROFILE_SCREEN, 1)->SetTvMode(Mode(2, 5), ""), 0);
  EXPECT_LE(Open(PROFILE_MAIN, 0)->SetTvMode(TvMode(), ""), 0);
  const json shown = tv.Show();
  EXPECT_EQ(json({{"antenna", 0}, {"service", 21}}), shown["tv_mode"]);
  EXPECT_EQ(json({{"screen", 1}, {"antenna", 2}, {"service", 5}}), shown["screens"][0]);
  ASSERT_EQ(1u, shown["tuning_changes"].size());
  const json& change = shown["tuning_changes"][0];
  EXPECT_EQ(json({1, 5}), json({change["screen"], change["service"]}));
  EXPECT_FALSE(change["time"].get<std::string>().empty());
}

TEST(Port, ServiceLookupsSucceedByConventionAndLeaveOutputsAloneOnFailure) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  Navigator* navigator = Open(PROFILE_MAIN, 0);
  ASSERT_NE(nullptr, navigator);
  ServiceQuery navigation;
  ASSERT_EQ(0, NavigationQueries::GetNavigationCriteria(NAVIGATION_MODE_ALL, navigation, NAVIGATION_SORT_MODE_DEFAULT));
  // The sixth service on Air is not listed in navigation mode 1.
  for (auto [mode, expected] : {std::pair{Mode(0, 21), 5}, std::pair{Mode(2, 4), 0}}) {
    int count = -7;
    EXPECT_GT(navigator->GetServiceCount(navigation, count, mode, 0), 0);
    EXPECT_EQ(expected, count);
  }
  ServiceQuery fetch;
  fetch.Fetch(ATTR_SERVICE_ID);
  fetch.Fetch(ATTR_MAJOR_NUMBER);
  ServiceData current, untouched;
  EXPECT_EQ(1, navigator->GetCurrentService(Mode(1, 21), fetch, current));
  ASSERT_NE(nullptr, current.GetAttributeTable());
  EXPECT_EQ(8388609u, *Attr(current, ATTR_SERVICE_ID)->GetValuePointer());
  EXPECT_EQ(101, Attr(current, ATTR_MAJOR_NUMBER)->GetUint16());
  EXPECT_EQ(nullptr, Attr(current, ATTR_MINOR_NUMBER));  // not fetched
  EXPECT_NE(1, navigator->GetCurrentService(Mode(2, 4), fetch, untouched));
  EXPECT_EQ(nullptr, untouched.GetAttributeTable());

  ServiceStore* store = nullptr;
  ASSERT_EQ(0, ServiceHub::OpenServiceStore(&store));
  ASSERT_NE(nullptr, store);
  struct Row { uint64_t id; int found, major; std::optional<int> minor; int kind; } rows[] = {
      {7340035, 1, 7, 1, 1}, {8388612, 1, 110, std::nullopt, 0}, {424242, 0, 0, 0, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.id);
    ServiceQuery query;  // no Fetch: every attribute the record has
    query.Where(ATTR_SERVICE_ID, row.id);
    ServiceData data;
    const int result = store->FindService(query, &data, 1);
    if (!row.found) {
      EXPECT_LE(result, 0);
      EXPECT_EQ(nullptr, data.GetAttributeTable());
      continue;
    }
    EXPECT_EQ(1, result);
    ASSERT_NE(nullptr, data.GetAttributeTable());
    EXPECT_EQ(row.major, Attr(data, ATTR_MAJOR_NUMBER)->GetUint16());
    const auto* minor = Attr(data, ATTR_MINOR_NUMBER);
    EXPECT_EQ(row.minor, minor ? std::optional<int>(minor->GetUint16()) : std::nullopt);
    EXPECT_EQ(row.kind, Attr(data, ATTR_NUMBER_KIND)->GetInt32());
  }
  // A service without a number holds all bits set in its 32-bit major attribute.
  json noNumber = simtest::ReadScenario("empty.json");
  noNumber["services"] = {{{"id", 99}, {"antenna", 0}, {"service", 1}, {"major", -1}, {"kind", -3}, {"name", "x"}}};
  tv.Load(noNumber);
  ServiceQuery query;
  query.Where(ATTR_SERVICE_ID, 99);
  ServiceData data;
  ASSERT_EQ(1, store->FindService(query, &data, 1));
  EXPECT_EQ(0xFFFFFFFFu, Attr(data, ATTR_MAJOR_NUMBER)->GetStored32());
  EXPECT_EQ(-3, Attr(data, ATTR_NUMBER_KIND)->GetInt32());
}

TEST(Port, SettingsAreTypedAndMissingOrMistypedReadsFail) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  tv.Set("db/menu/system/accessibility/focuszoom", "3");
  const char* const kConnection = "db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType";
  struct Row { const char* name; std::function<int(int*)> read; int expected; } rows[] = {  // expected -77: fails
      {"int", [](int* v) { return vconf_get_int("db/menu/system/accessibility/focuszoom", v); }, 3},
      {"bool", [&](int* v) { return vconf_get_bool(kConnection, v); }, 1},
      {"feature", [](int* v) {
         bool b = false;
         const int r = system_info_get_custom_bool("com.velmora/featureconf/pvr.pvr_support", &b);
         *v = b;
         return r;
       }, 1},
      {"system information", [](int* v) { return system_info_get_value_int(SYSTEM_INFO_KEY_TUNER_COUNT, v); }, 2},
      {"system setting", [](int* v) { return system_settings_get_value_int(SYSTEM_SETTINGS_KEY_COUNTRY, v); }, 1},
      {"missing int", [](int* v) { return vconf_get_int("db/no/such/key", v); }, -77},
      {"bool read as int", [&](int* v) { return vconf_get_int(kConnection, v); }, -77},
      {"int read as bool", [](int* v) { return vconf_get_bool("db/menu/picture/pip/onoff", v); }, -77},
      {"string read as int", [](int* v) { return vconf_get_int("db/menu/system/language", v); }, -77},
      {"null key", [](int* v) { return vconf_get_int(nullptr, v); }, -77},
      {"missing system information", [](int* v) { return system_info_get_value_int(system_info_key_e(999), v); }, -77},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    int value = -77;
    EXPECT_EQ(row.expected == -77, row.read(&value) != 0);
    EXPECT_EQ(row.expected, value);
  }
  bool untouched = true;
  EXPECT_NE(0, system_info_get_custom_bool("com.velmora/featureconf/none", &untouched));
  EXPECT_TRUE(untouched);
  EXPECT_THROW(tv.Set("db/no/such/key", "1"), std::exception);
  EXPECT_THROW(tv.Set("db/menu/picture/pip/onoff", "on"), std::exception);
}

TEST(Port, RecorderListsAndStopsWithItsOwnConventions) {
  tvtest::TempTv tv;
  tv.LoadFile("two-recordings.json");
  EXPECT_EQ(1, rec_service_init());
  uint64_t ids[2] = {0, 0}, one[2] = {0, 0xAAAA};
  int count = 0, single = 0;
  ASSERT_EQ(0, rec_get_recording_service_id_list(ids, 16, &count, 0));
  ASSERT_EQ(0, rec_get_recording_service_id_list(one, 8, &single, 0));  // room for one id only
  EXPECT_EQ((std::vector<uint64_t>{2, 7340034, 8388610, 2, 7340034, 0xAAAA}),
            (std::vector<uint64_t>{uint64_t(count), ids[0], ids[1], uint64_t(single), one[0], one[1]}));
  count = 9;
  EXPECT_NE(0, rec_get_recording_service_id_list(ids, 16, nullptr, 0));
  EXPECT_NE(0, rec_get_recording_service_id_list(nullptr, 16, &count, 0));
  EXPECT_EQ(9, count);

  EXPECT_EQ(0, rec_stop_recording(8388610, 1, "org.norix.epg"));
  EXPECT_NE(0, rec_stop_recording(8388610, 1, "org.norix.epg"));  // no longer recording
  tv.Run(simtest::Tvctl() + " playback 1");
  int playing = -1, stopped = -1;
  EXPECT_EQ(0, rec_is_playing_multimedia(&playing));
  EXPECT_EQ(0, rec_stop_playing_sync("org.norix.epg"));
  EXPECT_EQ(0, rec_is_playing_multimedia(&stopped));
  EXPECT_EQ(std::pair(1, 0), std::pair(playing, stopped));
  EXPECT_EQ(0, rec_service_destroy());

  const json shown = tv.Show();
  EXPECT_EQ(json({7340034}), shown["recordings"]);
  const json& requests = shown["recorder_requests"];
  ASSERT_EQ(3u, requests.size());
  EXPECT_EQ(json({"stop_recording", 8388610u, "org.norix.epg"}),
            json({requests[0]["op"], requests[0]["service_id"], requests[0]["caller"]}));
  EXPECT_EQ(json({"stop_playing", "org.norix.epg"}), json({requests[2]["op"], requests[2]["caller"]}));
  EXPECT_FALSE(requests[2].contains("service_id"));
}
