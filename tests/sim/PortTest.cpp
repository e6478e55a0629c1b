// The port's result conventions on the simulated TV: each operation's own
// success value, and outputs left as the caller preset them on failure.
#include <gtest/gtest.h>

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

json Screens() {
  json tv = simtest::ReadScenario("sample.json");
  tv["screens"] = {{{"screen", 1}, {"antenna", 2}, {"service", 3}}};
  return tv;
}

}  // namespace

TEST(Port, EachScreenHasItsNavigatorAndMode) {
  tvtest::TempTv tv;
  tv.Load(Screens());
  struct Row {
    ProfileKind profile;
    int index;
    TvMode expected;
  };
  const Row rows[] = {{PROFILE_MAIN, 0, TvMode(ANTENNA_MODE_0, ServiceMode(21))},
                      {PROFILE_SCREEN, 0, TvMode(ANTENNA_MODE_0, ServiceMode(21))},
                      {PROFILE_SCREEN, 1, TvMode(ANTENNA_MODE_SATELLITE, ServiceMode(3))},
                      {PROFILE_SCREEN, 2, TvMode(ANTENNA_MODE_0, ServiceMode(21))}};  // no mode of its own
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
  EXPECT_GT(Open(PROFILE_SCREEN, 1)->SetTvMode(TvMode(ANTENNA_MODE_SATELLITE, ServiceMode(5)), ""), 0);
  EXPECT_LE(Open(PROFILE_MAIN, 0)->SetTvMode(TvMode(), ""), 0);
  const json shown = tv.Show();
  EXPECT_EQ(json({{"antenna", 0}, {"service", 21}}), shown["tv_mode"]);
  EXPECT_EQ(json({{"screen", 1}, {"antenna", 2}, {"service", 5}}), shown["screens"][0]);
  ASSERT_EQ(1u, shown["tuning_changes"].size());
  EXPECT_EQ(1, shown["tuning_changes"][0]["screen"]);
  EXPECT_EQ(5, shown["tuning_changes"][0]["service"]);
  EXPECT_FALSE(shown["tuning_changes"][0]["time"].get<std::string>().empty());
}

TEST(Port, ServiceLookupsSucceedByConventionAndLeaveOutputsAloneOnFailure) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  Navigator* navigator = Open(PROFILE_MAIN, 0);
  ASSERT_NE(nullptr, navigator);
  ServiceQuery navigation;
  ASSERT_EQ(0, NavigationQueries::GetNavigationCriteria(NAVIGATION_MODE_ALL, navigation, NAVIGATION_SORT_MODE_DEFAULT));

  int count = -7;
  EXPECT_GT(navigator->GetServiceCount(navigation, count, TvMode(ANTENNA_MODE_0, ServiceMode(21)), 0), 0);
  EXPECT_EQ(5, count);  // the sixth service on Air is not listed in navigation mode 1
  count = -7;
  EXPECT_GT(navigator->GetServiceCount(navigation, count, TvMode(ANTENNA_MODE_SATELLITE, ServiceMode(4)), 0), 0);
  EXPECT_EQ(0, count);

  ServiceQuery fetch;
  fetch.Fetch(ATTR_SERVICE_ID);
  fetch.Fetch(ATTR_MAJOR_NUMBER);
  ServiceData current;
  EXPECT_EQ(1, navigator->GetCurrentService(TvMode(ANTENNA_MODE_1, ServiceMode(21)), fetch, current));
  ASSERT_NE(nullptr, current.GetAttributeTable());
  EXPECT_EQ(8388609u, *current.GetAttributeTable()->GetAttribute(ATTR_SERVICE_ID)->GetValuePointer());
  EXPECT_EQ(101, current.GetAttributeTable()->GetAttribute(ATTR_MAJOR_NUMBER)->GetUint16());
  EXPECT_EQ(nullptr, current.GetAttributeTable()->GetAttribute(ATTR_MINOR_NUMBER));  // not fetched
  ServiceData untouched;
  EXPECT_NE(1, navigator->GetCurrentService(TvMode(ANTENNA_MODE_SATELLITE, ServiceMode(4)), fetch, untouched));
  EXPECT_EQ(nullptr, untouched.GetAttributeTable());

  ServiceStore* store = nullptr;
  ASSERT_EQ(0, ServiceHub::OpenServiceStore(&store));
  ASSERT_NE(nullptr, store);
  struct Row {
    uint64_t id;
    int found;
    int major;
    std::optional<int> minor, kind;
  };
  const Row rows[] = {{7340035, 1, 7, 1, 1}, {8388612, 1, 110, std::nullopt, 0}, {424242, 0, 0, 0, 0}};
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
    const ServiceAttributeTable* table = data.GetAttributeTable();
    ASSERT_NE(nullptr, table);
    EXPECT_EQ(row.major, table->GetAttribute(ATTR_MAJOR_NUMBER)->GetUint16());
    const auto* minor = table->GetAttribute(ATTR_MINOR_NUMBER);
    EXPECT_EQ(row.minor.has_value(), minor != nullptr);
    if (minor && row.minor) {
      EXPECT_EQ(*row.minor, minor->GetUint16());
    }
    EXPECT_EQ(*row.kind, table->GetAttribute(ATTR_NUMBER_KIND)->GetInt32());
  }

  // A service without a number holds all bits set in its 32-bit major attribute.
  json noNumber = simtest::ReadScenario("empty.json");
  noNumber["services"] = {{{"id", 99}, {"antenna", 0}, {"service", 1}, {"major", -1}, {"kind", -3}, {"name", "x"}}};
  tv.Load(noNumber);
  ServiceQuery query;
  query.Where(ATTR_SERVICE_ID, 99);
  ServiceData data;
  ASSERT_EQ(1, store->FindService(query, &data, 1));
  EXPECT_EQ(0xFFFFFFFFu, data.GetAttributeTable()->GetAttribute(ATTR_MAJOR_NUMBER)->GetStored32());
  EXPECT_EQ(-3, data.GetAttributeTable()->GetAttribute(ATTR_NUMBER_KIND)->GetInt32());
}

TEST(Port, SettingsAreTypedAndMissingOrMistypedReadsFail) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  tv.Set("db/menu/system/accessibility/focuszoom", "3");
  int number = -5;
  EXPECT_EQ(0, vconf_get_int("db/menu/system/accessibility/focuszoom", &number));
  EXPECT_EQ(3, number);
  int flag = -5;
  EXPECT_EQ(0, vconf_get_bool("db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType", &flag));
  EXPECT_EQ(1, flag);
  bool feature = false;
  EXPECT_EQ(0, system_info_get_custom_bool("com.velmora/featureconf/pvr.pvr_support", &feature));
  EXPECT_TRUE(feature);
  int tuners = -5, country = -5;
  EXPECT_EQ(0, system_info_get_value_int(SYSTEM_INFO_KEY_TUNER_COUNT, &tuners));
  EXPECT_EQ(2, tuners);
  EXPECT_EQ(0, system_settings_get_value_int(SYSTEM_SETTINGS_KEY_COUNTRY, &country));
  EXPECT_EQ(1, country);

  struct Row {
    const char* name;
    std::function<int(int*)> read;
  };
  const Row failing[] = {
      {"missing int", [](int* v) { return vconf_get_int("db/no/such/key", v); }},
      {"bool read as int",
       [](int* v) { return vconf_get_int("db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType", v); }},
      {"int read as bool", [](int* v) { return vconf_get_bool("db/menu/picture/pip/onoff", v); }},
      {"string read as int", [](int* v) { return vconf_get_int("db/menu/system/language", v); }},
      {"null key", [](int* v) { return vconf_get_int(nullptr, v); }},
      {"missing system information", [](int* v) { return system_info_get_value_int(system_info_key_e(999), v); }},
  };
  for (const Row& row : failing) {
    SCOPED_TRACE(row.name);
    int value = -77;
    EXPECT_NE(0, row.read(&value));
    EXPECT_EQ(-77, value);
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

  uint64_t ids[2] = {0, 0};
  int count = 0;
  ASSERT_EQ(0, rec_get_recording_service_id_list(ids, 16, &count, 0));
  EXPECT_EQ(2, count);
  EXPECT_EQ(7340034u, ids[0]);
  EXPECT_EQ(8388610u, ids[1]);
  uint64_t one[2] = {0, 0xAAAA};
  count = 0;
  ASSERT_EQ(0, rec_get_recording_service_id_list(one, 8, &count, 0));  // room for one id only
  EXPECT_EQ(2, count);
  EXPECT_EQ(7340034u, one[0]);
  EXPECT_EQ(0xAAAAu, one[1]);
  count = 9;
  EXPECT_NE(0, rec_get_recording_service_id_list(ids, 16, nullptr, 0));
  EXPECT_NE(0, rec_get_recording_service_id_list(nullptr, 16, &count, 0));
  EXPECT_EQ(9, count);

  EXPECT_EQ(0, rec_stop_recording(8388610, 1, "org.norix.epg"));
  EXPECT_NE(0, rec_stop_recording(8388610, 1, "org.norix.epg"));  // no longer recording
  tv.Run(simtest::Tvctl() + " playback 1");
  int playing = -1;
  EXPECT_EQ(0, rec_is_playing_multimedia(&playing));
  EXPECT_EQ(1, playing);
  EXPECT_EQ(0, rec_stop_playing_sync("org.norix.epg"));
  EXPECT_EQ(0, rec_is_playing_multimedia(&playing));
  EXPECT_EQ(0, playing);
  EXPECT_EQ(0, rec_service_destroy());

  const json shown = tv.Show();
  EXPECT_EQ(json({7340034}), shown["recordings"]);
  ASSERT_EQ(3u, shown["recorder_requests"].size());
  EXPECT_EQ("stop_recording", shown["recorder_requests"][0]["op"]);
  EXPECT_EQ(8388610u, shown["recorder_requests"][0]["service_id"]);
  EXPECT_EQ("org.norix.epg", shown["recorder_requests"][0]["caller"]);
  EXPECT_EQ("stop_playing", shown["recorder_requests"][2]["op"]);
  EXPECT_EQ("org.norix.epg", shown["recorder_requests"][2]["caller"]);
  EXPECT_FALSE(shown["recorder_requests"][2].contains("service_id"));
}
