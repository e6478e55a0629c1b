// Recording support, running recordings, recordable tuners and playback on a simulated TV.
#include "UtilTestUtil.h"

namespace {

using namespace utiltest;
using UtilRecording = Fresh;

TEST_F(UtilRecording, TwoTunersCountAsOneOnASingleSatelliteConnection) {
  const json sat = {{"antenna", 2}, {"service", 5}}, air = {{"antenna", 0}, {"service", 21}};
  // Tuner count, recordable tuners and the connection; absent keys are missing on the TV.
  auto settings = [](json tuners, json recordable, json connection) {
    json s = json::object();
    if (!tuners.is_null()) s["system_info/18"] = tuners;
    if (!recordable.is_null()) s["system_info/238"] = recordable;
    if (!connection.is_null()) s[kConnection] = connection;
    return s;
  };
  // tuners: m_TunerNumWithSingleSatelite; recordable: NumOfRecordableTuner; line: an extra one, or null.
  struct Row { const char* name; json tuned, settings, fault; int tuners, recordable; const char* line; int buffer; } rows[] = {
      {"satellite, single", sat, settings(2, 2, false), nullptr, 1, 1,
       "Connection = [0] SatelliteAntConnectionType is Single", 0},
      {"satellite, two connections", sat, settings(2, 2, true), nullptr, 2, 2, nullptr, 0},
      {"air, single", air, settings(2, 2, false), nullptr, 2, 2, nullptr, 0},
      {"three tuners", sat, settings(3, 3, false), nullptr, 3, 3, nullptr, 0},
      {"three tuners, one recordable", sat, settings(3, 1, false), nullptr, 3, 1, nullptr, 0},
      {"fewer tuners than recordable", air, settings(1, 2, nullptr), nullptr, 1, 1, nullptr, 0},
      {"tuner count unreadable", sat, settings(nullptr, 2, false), nullptr, 0, 0, nullptr, 0},
      {"connection unreadable", sat, settings(2, 2, nullptr), nullptr, 2, 2, "Can not get Antenna Connection Type", 2},
      {"mode read gives 2", sat, settings(2, 2, false), {{"op", "GetTvMode"}, {"result", 2}}, 2, 2, nullptr, 0},
      {"navigator missing", sat, settings(2, 2, false), {{"op", "OpenNavigator"}, {"null", true}}, 2, 2, nullptr, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    auto tv = Tv({{"tv_mode", row.tuned}, {"settings", row.settings}}, row.fault);
    EXPECT_EQ(row.tuners, Util::m_TunerNumWithSingleSatelite());
    if (row.line) {
      EXPECT_TRUE(tv->Logged("m_TunerNumWithSingleSatelite", row.line, row.buffer, 5));
    }
    if (row.settings.contains("system_info/18")) {
      const std::string summary = "nRet = 0, m_TunerNumWithSingleSatelite = [" + std::to_string(row.tuners) + "]";
      EXPECT_TRUE(tv->Logged("m_TunerNumWithSingleSatelite", summary, 0, 5));
    }
    tv->ClearLogs();
    EXPECT_EQ(row.recordable, Util::NumOfRecordableTuner());
    EXPECT_TRUE(tv->Logged("NumOfRecordableTuner", "NumOfRecordableTuner = [" + std::to_string(row.recordable) + "]",
                           0, 5));
  }
}

TEST_F(UtilRecording, CountsRunningRecordingsOnlyWhenTheTvCanRecord) {
  const std::string listed = "get recording service id list ";
  // pvr null: the feature key is missing; queried: whether the recorder is asked.
  struct Row { const char* name; json pvr, recordings, fault; int expected; bool queried; std::string line;
               int buffer, priority; } rows[] = {
      {"no recording", true, json::array(), nullptr, 0, true, listed + "success, nCount = 0, eResult = 0", 0, 4},
      {"one", true, {4097}, nullptr, 1, true, "Current in record channel count is 1", 0, 5},
      {"two", true, {4097, 4098}, nullptr, 2, true, listed + "success, nCount = 2, eResult = 0", 0, 4},
      {"query fails", true, {4097}, {{"op", "rec_get_recording_service_id_list"}, {"result", -7}}, 0, true,
       listed + "failed, nCount = 0, eResult = -7", 2, 5},
      {"cannot record", false, {4097}, nullptr, 0, false, "PVR is NOT Support", 2, 5},
      {"feature key missing", nullptr, {4097}, nullptr, 0, false, std::string(kPvrKey) + " value get failed", 2, 5},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Util::ResetCachesForTesting();
    json services = json::array();
    for (const json& id : row.recordings) services.push_back(Service(id.get<int>()));
    json settings = json::object();
    if (!row.pvr.is_null()) settings[kPvrKey] = row.pvr;
    auto tv = Tv({{"services", services}, {"recordings", row.recordings}, {"settings", settings}}, row.fault);
    EXPECT_EQ(row.expected, Util::PvrRecording(true));
    EXPECT_EQ(row.queried ? 1 : 0, tv->CallCount("rec_get_recording_service_id_list"));
    const char* function = row.queried ? "GetRecordChannelCount" : (row.pvr.is_null() ? "IsPvrSupport" : "PvrRecording");
    EXPECT_TRUE(tv->Logged(function, row.line, row.buffer, row.priority));
  }
}

TEST_F(UtilRecording, RecordingSupportIsReadAgainOnlyAfterAFailedRead) {
  auto tv = Tv({{"settings", {{kPvrKey, true}}}}, {{"op", "system_info_get_custom_bool"}, {"result", -1}, {"nth", 1}});
  EXPECT_FALSE(Util::IsPvrSupport());
  EXPECT_TRUE(tv->Logged("IsPvrSupport", "PVR support: 0", 0, 5));
  EXPECT_TRUE(Util::IsPvrSupport()) << "a failed read is retried";
  tv->Set(kPvrKey, "false");
  EXPECT_TRUE(Util::IsPvrSupport()) << "a successful read is kept";
  EXPECT_EQ(2, tv->CallCount("system_info_get_custom_bool"));
  EXPECT_TRUE(tv->Logged("IsPvrSupport", "PVR support: 1", 0, 5));
}

TEST_F(UtilRecording, StopsOnlyARunningPlayback) {
  struct Row { const char* name; int playing; json fault; int expected; bool stopRequested; } rows[] = {
      {"playing", 1, nullptr, 1, true},
      {"not playing", 0, nullptr, 0, false},
      {"state 2", 2, nullptr, 0, false},
      {"state unreadable", 1, {{"op", "rec_is_playing_multimedia"}, {"result", -1}}, 0, false},
      {"stop refused", 1, {{"op", "rec_stop_playing_sync"}, {"result", 5}}, 0, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    auto tv = Tv({{"playback", {{"playing", row.playing}}}}, row.fault);
    EXPECT_EQ(row.expected, Util::StopPlayingMultimedia());
    EXPECT_EQ(row.expected == 1, tv->Logged("StopPlayingMultimedia", "stop playing", 0, 4));
    EXPECT_EQ(!row.fault.is_null() && row.fault["op"] == "rec_is_playing_multimedia",
              tv->Logged("StopPlayingMultimedia", "rec_is_playing_multimedia is failed!", 2, 5));
    EXPECT_EQ(row.stopRequested ? 1 : 0, tv->CallCount("rec_stop_playing_sync"));
    if (row.expected == 1) {
      const json requests = tv->Show()["recorder_requests"];
      ASSERT_EQ(1u, requests.size());
      EXPECT_EQ("org.norix.epg", requests[0]["caller"]);
    }
  }
}

}  // namespace
