// Texts of the simulated middleware: big-endian UTF-16 names, the converter,
// antenna names and channel numbers, templates, programmes, profiles and the KPI sink.
#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

#include "CaProfileService.h"
#include "ChannelText.h"
#include "CombineStrings.h"
#include "ProgramGuide.h"
#include "SimTestUtil.h"
#include "TempTv.h"
#include "VirtualChannels.h"

using nlohmann::json;

namespace {

// The bytes of a UTF-16 string as they lie in memory.
std::vector<uint8_t> Bytes(const std::u16string& text) {
  if (text.empty()) return {};  // no copy from or to a null buffer
  const auto* first = reinterpret_cast<const uint8_t*>(text.data());
  return std::vector<uint8_t>(first, first + text.size() * 2);
}

json Named(const std::string& name) {
  json tv = simtest::ReadScenario("empty.json");
  tv["services"] = {{{"id", 5}, {"antenna", 0}, {"service", 1}, {"major", 1}, {"name", name}}};
  return tv;
}

}  // namespace

TEST(Texts, ServiceNamesAreUtf16WithBigEndianBytesInMemory) {
  struct Row { const char* name; std::vector<uint8_t> bytes; } rows[] = {
      {"AB", {0x00, 'A', 0x00, 'B'}},
      {"a\nb", {0x00, 'a', 0x00, 0x0A, 0x00, 'b'}},
      {"Ωμ", {0x03, 0xA9, 0x03, 0xBC}},
      {"😀", {0xD8, 0x3D, 0xDE, 0x00}},
      {"", {}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load(Named(row.name));
    std::u16string name = u"old";
    ASSERT_TRUE(ServiceNames::GetServiceName(5, name, true));
    EXPECT_EQ(row.bytes, Bytes(name));

    // The converter reads the same byte order back.
    std::vector<char> out(name.size() * 4 + 1, 'x');
    ASSERT_NE(0, UnicodeToUtf8Buffer(out.data(), static_cast<int>(out.size()),
                                     reinterpret_cast<const uint16_t*>(name.data()), static_cast<int>(name.size())));
    EXPECT_EQ(row.name, std::string(out.data()));
  }
  tvtest::TempTv tv;
  std::u16string untouched = u"keep";
  EXPECT_FALSE(ServiceNames::GetServiceName(77, untouched, true));
  EXPECT_EQ(u"keep", untouched);
}

TEST(Texts, ConverterFailsOnBadInputOrTooSmallOutput) {
  tvtest::TempTv tv;
  const uint16_t lone[] = {0x00D8};  // a high surrogate alone, big-endian
  char out[16] = {};
  EXPECT_EQ(0, UnicodeToUtf8Buffer(out, sizeof out, lone, 1));
  const uint16_t abc[] = {0x4100, 0x4200, 0x4300};
  char small[2] = {'x', 'x'};
  EXPECT_EQ(0, UnicodeToUtf8Buffer(small, 2, abc, 3));
  const uint16_t padded[] = {0x4100, 0x0000, 0x0000};  // zero units convert to zero bytes
  char three[3] = {'x', 'x', 'x'};
  EXPECT_NE(0, UnicodeToUtf8Buffer(three, 3, padded, 3));
  EXPECT_EQ(0, std::memcmp(three, "A\0\0", 3));
}

TEST(Texts, AntennaNamesAndChannelNumbersComeFromTheScenario) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  struct Row { int antenna, service; const char* name; } names[] = {{0, 21, "Air"}, {1, 0, "Cable"}, {2, 5, "Satellite 13°E"}, {2, 6, "Satellite"}, {-1, -1, ""}};
  for (const Row& row : names) {
    SCOPED_TRACE(std::to_string(row.antenna) + "/" + std::to_string(row.service));
    EXPECT_EQ(row.name, ChannelText::GetChannelTypeString(TvMode(AntennaMode(row.antenna), ServiceMode(row.service)),
                                                          CHANNEL_KIND_ANY));
  }
  const TvMode air(ANTENNA_MODE_0, ServiceMode(21));
  EXPECT_EQ("7-1", ChannelText::GetChannelNumberString(air, 1, 7, 1));
  EXPECT_EQ("101", ChannelText::GetChannelNumberString(air, 0, 101, 65535));
  EXPECT_EQ("12-3", ChannelText::GetChannelNumberString(air, 5, 12, 3));  // no format for kind 5
  EXPECT_EQ("12", ChannelText::GetChannelNumberString(air, 5, 12, 65535));

  // A format for a tuning mode, or for every service mode of an antenna, wins over the kind's.
  json scenario = simtest::ReadScenario("sample.json");
  scenario["mode_number_formats"] = {{{"antenna", 0}, {"service", 21}, {"kind", 1}, {"format", "{major}.{minor}"}},
                                     {{"antenna", 0}, {"kind", 1}, {"format", "A{major}"}},
                                     {{"antenna", 2}, {"kind", 0}, {"format", "S{major}"}}};
  tv.Load(scenario);
  struct Number { int antenna, service, kind; const char* text; } numbers[] = {
      {0, 21, 1, "7.1"}, {0, 22, 1, "A7"}, {1, 21, 1, "7-1"}, {2, 3, 0, "S7"}, {2, 3, 1, "7-1"}, {0, 21, 0, "7"}};
  for (const Number& row : numbers) {
    SCOPED_TRACE(std::to_string(row.antenna) + "/" + std::to_string(row.service) + " kind " + std::to_string(row.kind));
    EXPECT_EQ(row.text, ChannelText::GetChannelNumberString(TvMode(AntennaMode(row.antenna), ServiceMode(row.service)),
                                                            row.kind, 7, 1));
  }
  EXPECT_EQ(scenario["mode_number_formats"].size(), tv.Show()["mode_number_formats"].size());
}

TEST(Texts, CombineStringsFillsPlaceholdersAndNeverWritesPastTheSize) {
  struct Row { const char *format, *s1, *s2; int size; const char* expected; } rows[] = {
      {"Change to %s?", "News", nullptr, 255, "Change to News?"},
      {"%2$s then %1$s", "one", "two", 255, "two then one"},
      {"%s and %s", "a", nullptr, 255, "a and "},
      {"100%% %s", "sure", nullptr, 255, "100% sure"},
      {"%d stays", nullptr, nullptr, 255, "%d stays"},
      {"abcdef", nullptr, nullptr, 4, "abcd"},
      {"ééé", nullptr, nullptr, 5, "éé"},  // never half a character
      {"%s", "xyz", nullptr, 0, ""},
  };
  tvtest::TempTv tv;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.format);
    char out[300];
    std::memset(out, '#', sizeof out);
    const int written = CombineStrings(out, row.size, row.format, row.s1, row.s2, nullptr, nullptr);
    EXPECT_EQ(row.expected, std::string(out));
    EXPECT_EQ(static_cast<int>(std::strlen(row.expected)), written);
    EXPECT_EQ('#', out[row.size + 1]);
  }
  char out[8] = "zz";
  EXPECT_EQ(0, CombineStrings(out, 7, nullptr, "a", nullptr, nullptr, nullptr));
  EXPECT_STREQ("", out);
}

TEST(Texts, ProgrammesProfilesAndKpiEventsFollowTheTv) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  // 7340037 is on air without title, 8388612 has nothing on air, 1 is no service: the title stays.
  const std::tuple<uint64_t, bool, const char*> programmes[] = {
      {7340035, true, "Ειδήσεις"}, {7340037, true, ""}, {8388612, false, "keep"}, {1, false, "keep"}};
  for (const auto& [id, found, title] : programmes) {
    SCOPED_TRACE(id);
    ProgramInfo info;
    if (!found) info.SetTitle("keep");
    EXPECT_EQ(found, ProgramGuide::GetInstance()->GetPresentProgram(id, info) != 0);
    EXPECT_EQ(title, info.Title());
  }

  std::list<OperatorProfile> profiles;
  ASSERT_TRUE(CaProfileService::ProfileServiceInstance()->GetInstalledOperatorProfiles(profiles, 0));
  ASSERT_EQ(2u, profiles.size());
  const OperatorProfile& second = profiles.back();
  EXPECT_EQ(TvMode(ANTENNA_MODE_SATELLITE, ServiceMode(5)), second.tvMode);
  EXPECT_EQ((std::vector<int>{302, 1, 1, 13}),
            (std::vector<int>{second.nProfileId, second.bEnabled, second.bRegional, second.nSatelliteId}));
  EXPECT_EQ(std::set<AntennaMode>{ANTENNA_MODE_SATELLITE}, second.setAntennaModes);
  EXPECT_EQ("/opt/logos/alpenblick.png", second.strLogoPath);
  EXPECT_EQ(Bytes(u"\u4100"), Bytes(std::u16string(1, second.strOperatorName[0])));  // 'A', big-endian

  VirtualChannelsApi* sink = VirtualChannels::GetVirtualChannelsAPI();
  ASSERT_NE(nullptr, sink);
  EXPECT_EQ(sink, VirtualChannels::GetVirtualChannelsAPI());
  EXPECT_EQ(0, sink->IsFilterDetailEnabled());
  tv.Set("kpi/filter_detail", "true");
  EXPECT_EQ(1, sink->IsFilterDetailEnabled());
  EXPECT_EQ(0, sink->LogKpiEvent(1, "SELECT_ANTENNA", "EV017", "{sl_antenna=Cable;pre_antenna=Air;antennanum=2}"));
  const json events = tv.Show()["kpi_events"];
  ASSERT_EQ(1u, events.size());
  const json& e = events[0];
  EXPECT_FALSE(e["time"].get<std::string>().empty());
  EXPECT_EQ(json({"SELECT_ANTENNA", "EV017", "{sl_antenna=Cable;pre_antenna=Air;antennanum=2}", 1}),
            json({e["event"], e["code"], e["desc"], e["status"]}));
}
