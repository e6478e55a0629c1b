// Recording support, running recordings, recordable tuners and playback on a simulated TV.
#include <gtest/gtest.h>

#include <string>

#include "TempTv.h"
#include "Util.h"

using nlohmann::json;

namespace {

const char* const kPvrKey = "com.velmora/featureconf/pvr.pvr_support";
const char* const kConnection = "db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType";

int CallCount(const tvtest::TempTv& tv, const std::string& op) {
  const json shown = tv.Show();  // the loop must not run over a destroyed temporary
  int count = 0;
  for (const json& call : shown["calls"]) count += call.value("op", "") == op;
  return count;
}

class UtilRecording : public ::testing::Test {
 protected:
  void SetUp() override { Util::ResetCachesForTesting(); }
};

TEST_F(UtilRecording, TwoTunersCountAsOneOnASingleSatelliteConnection) {
  const json sat = {{"antenna", 2}, {"service", 5}};
  const json air = {{"antenna", 0}, {"service", 21}};
  struct Row {
    const char* name;
    json tuned;
    json settings;  // keys absent here are missing on the TV
    json fault;
    int tuners;      // m_TunerNumWithSingleSatelite
    int recordable;  // NumOfRecordableTuner
    const char* line;  // an extra expected line of m_TunerNumWithSingleSatelite, or null
    int lineBuffer;
  } rows[] = {
      {"satellite, single", sat, {{"system_info/18", 2}, {"system_info/238", 2}, {kConnection, false}}, nullptr, 1,
       1, "Connection = [0] SatelliteAntConnectionType is Single", 0},
      {"satellite, two connections", sat, {{"system_info/18", 2}, {"system_info/238", 2}, {kConnection, true}},
       nullptr, 2, 2, nullptr, 0},
      {"air, single", air, {{"system_info/18", 2}, {"system_info/238", 2}, {kConnection, false}}, nullptr, 2, 2,
       nullptr, 0},
      {"three tuners", sat, {{"system_info/18", 3}, {"system_info/238", 3}, {kConnection, false}}, nullptr, 3, 3,
       nullptr, 0},
      {"three tuners, one recordable", sat, {{"system_info/18", 3}, {"system_info/238", 1}, {kConnection, false}},
       nullptr, 3, 1, nullptr, 0},
      {"fewer tuners than recordable", air, {{"system_info/18", 1}, {"system_info/238", 2}}, nullptr, 1, 1, nullptr, 0},
      {"tuner count unreadable", sat, {{"system_info/238", 2}, {kConnection, false}}, nullptr, 0, 0, nullptr, 0},
      {"connection unreadable", sat, {{"system_info/18", 2}, {"system_info/238", 2}}, nullptr, 2, 2,
       "Can not get Antenna Connection Type", 2},
      {"mode read gives 2", sat, {{"system_info/18", 2}, {"system_info/238", 2}, {kConnection, false}},
       {{"op", "GetTvMode"}, {"result", 2}}, 2, 2, nullptr, 0},
      {"navigator missing", sat, {{"system_info/18", 2}, {"system_info/238", 2}, {kConnection, false}},
       {{"op", "OpenNavigator"}, {"null", true}}, 2, 2, nullptr, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load({{"tv_mode", row.tuned}, {"settings", row.settings}});
    if (!row.fault.is_null()) tv.AddFault(row.fault);
    EXPECT_EQ(row.tuners, Util::m_TunerNumWithSingleSatelite());
    if (row.line) {
      EXPECT_TRUE(tv.Logged("m_TunerNumWithSingleSatelite", row.line, row.lineBuffer, 5));
    }
    if (row.settings.contains("system_info/18")) {
      const std::string summary = "nRet = 0, m_TunerNumWithSingleSatelite = [" + std::to_string(row.tuners) + "]";
      EXPECT_TRUE(tv.Logged("m_TunerNumWithSingleSatelite", summary, 0, 5));
    }
    tv.ClearLogs();
    EXPECT_EQ(row.recordable, Util::NumOfRecordableTuner());
    EXPECT_TRUE(tv.Logged("NumOfRecordableTuner", "NumOfRecordableTuner = [" + std::to_string(row.recordable) + "]",
                          0, 5));
  }
}

TEST_F(UtilRecording, CountsRunningRecordingsOnlyWhenTheTvCanRecord) {
  struct Row {
    const char* name;
    json pvr;  // null: the feature key is missing
    json recordings;
    json fault;
    int expected;
    bool queried;
    const char* line;
    int buffer, priority;
  } rows[] = {
      {"no recording", true, json::array(), nullptr, 0, true,
       "get recording service id list success, nCount = 0, eResult = 0", 0, 4},
      {"one", true, {4097}, nullptr, 1, true, "Current in record channel count is 1", 0, 5},
      {"two", true, {4097, 4098}, nullptr, 2, true,
       "get recording service id list success, nCount = 2, eResult = 0", 0, 4},
      {"query fails", true, {4097}, {{"op", "rec_get_recording_service_id_list"}, {"result", -7}}, 0, true,
       "get recording service id list failed, nCount = 0, eResult = -7", 2, 5},
      {"cannot record", false, {4097}, nullptr, 0, false, "PVR is NOT Support", 2, 5},
      {"feature key missing", nullptr, {4097}, nullptr, 0, false,
       "com.velmora/featureconf/pvr.pvr_support value get failed", 2, 5},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Util::ResetCachesForTesting();
    tvtest::TempTv tv;
    json services = json::array();
    for (const json& id : row.recordings)
      services.push_back({{"id", id}, {"antenna", 0}, {"service", 1}, {"major", 1}, {"minor", 0}, {"kind", 0},
                          {"name", "Rec"}, {"navigation", {1}}});
    json settings = json::object();
    if (!row.pvr.is_null()) settings[kPvrKey] = row.pvr;
    tv.Load({{"services", services}, {"recordings", row.recordings}, {"settings", settings}});
    if (!row.fault.is_null()) tv.AddFault(row.fault);
    EXPECT_EQ(row.expected, Util::PvrRecording(true));
    EXPECT_EQ(row.queried ? 1 : 0, CallCount(tv, "rec_get_recording_service_id_list"));
    const char* function = row.queried ? "GetRecordChannelCount" : (row.pvr.is_null() ? "IsPvrSupport" : "PvrRecording");
    EXPECT_TRUE(tv.Logged(function, row.line, row.buffer, row.priority));
  }
}

TEST_F(UtilRecording, RecordingSupportIsReadAgainOnlyAfterAFailedRead) {
  tvtest::TempTv tv;
  tv.Load({{"settings", {{kPvrKey, true}}}});
  tv.AddFault({{"op", "system_info_get_custom_bool"}, {"result", -1}, {"nth", 1}});
  EXPECT_FALSE(Util::IsPvrSupport());
  EXPECT_TRUE(tv.Logged("IsPvrSupport", "PVR support: 0", 0, 5));
  EXPECT_TRUE(Util::IsPvrSupport()) << "a failed read is retried";
  tv.Set(kPvrKey, "false");
  EXPECT_TRUE(Util::IsPvrSupport()) << "a successful read is kept";
  EXPECT_EQ(2, CallCount(tv, "system_info_get_custom_bool"));
  EXPECT_TRUE(tv.Logged("IsPvrSupport", "PVR support: 1", 0, 5));
}

TEST_F(UtilRecording, StopsOnlyARunningPlayback) {
  struct Row {
    const char* name;
    int playing;
    json fault;
    int expected;
    bool stopRequested;
  } rows[] = {
      {"playing", 1, nullptr, 1, true},
      {"not playing", 0, nullptr, 0, false},
      {"state 2", 2, nullptr, 0, false},
      {"state unreadable", 1, {{"op", "rec_is_playing_multimedia"}, {"result", -1}}, 0, false},
      {"stop refused", 1, {{"op", "rec_stop_playing_sync"}, {"result", 5}}, 0, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load({{"playback", {{"playing", row.playing}}}});
    if (!row.fault.is_null()) tv.AddFault(row.fault);
    EXPECT_EQ(row.expected, Util::StopPlayingMultimedia());
    EXPECT_EQ(row.expected == 1, tv.Logged("StopPlayingMultimedia", "stop playing", 0, 4));
    EXPECT_EQ(!row.fault.is_null() && row.fault["op"] == "rec_is_playing_multimedia",
              tv.Logged("StopPlayingMultimedia", "rec_is_playing_multimedia is failed!", 2, 5));
    EXPECT_EQ(row.stopRequested ? 1 : 0, CallCount(tv, "rec_stop_playing_sync"));
    if (row.expected == 1) {
      const json requests = tv.Show()["recorder_requests"];
      ASSERT_EQ(1u, requests.size());
      EXPECT_EQ("org.norix.epg", requests[0]["caller"]);
    }
  }
}

}  // namespace
