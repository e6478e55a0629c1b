// Texts of the simulated middleware that the application shows as they come:
// big-endian UTF-16 names, channel numbers by format, template filling and its
// cut. The other port conventions are what the application's tests run on.
#include <gtest/gtest.h>

#include <cstring>

#include "ChannelText.h"
#include "CombineStrings.h"
#include "SimTestUtil.h"
#include "TempTv.h"

using nlohmann::json;

TEST(Port, ServiceNamesAreUtf16WithBigEndianBytesInMemoryAndConvertBack) {
  const std::pair<const char*, std::vector<uint8_t>> rows[] = {
      {"AB", {0x00, 'A', 0x00, 'B'}}, {"a\nb", {0x00, 'a', 0x00, 0x0A, 0x00, 'b'}}, {"Ωμ", {0x03, 0xA9, 0x03, 0xBC}},
      {"😀", {0xD8, 0x3D, 0xDE, 0x00}}};
  for (const auto& [text, bytes] : rows) {
    SCOPED_TRACE(text);
    tvtest::TempTv tv;
    json scenario = simtest::ReadScenario("empty.json");
    scenario["services"] = {{{"id", 5}, {"antenna", 0}, {"service", 1}, {"major", 1}, {"name", text}}};
    tv.Load(scenario);
    std::u16string name;
    ASSERT_TRUE(ServiceNames::GetServiceName(5, name, true));
    const auto* first = reinterpret_cast<const uint8_t*>(name.data());
    EXPECT_EQ(bytes, std::vector<uint8_t>(first, first + name.size() * 2));
    std::vector<char> out(name.size() * 4 + 1, 'x');
    ASSERT_NE(0, UnicodeToUtf8Buffer(out.data(), static_cast<int>(out.size()),
                                     reinterpret_cast<const uint16_t*>(name.data()), static_cast<int>(name.size())));
    EXPECT_EQ(text, std::string(out.data()));
  }
}

TEST(Port, ChannelNumbersTakeTheModesFormatThenTheAntennasThenTheKinds) {
  tvtest::TempTv tv;
  json scenario = simtest::ReadScenario("sample.json");
  scenario["mode_number_formats"] = {{{"antenna", 0}, {"service", 21}, {"kind", 1}, {"format", "{major}.{minor}"}},
                                     {{"antenna", 0}, {"kind", 1}, {"format", "A{major}"}},
                                     {{"antenna", 2}, {"kind", 0}, {"format", "S{major}"}}};
  tv.Load(scenario);
  struct Row { int antenna, service, kind, minor; const char* text; } rows[] = {
      {0, 21, 1, 1, "7.1"}, {0, 22, 1, 1, "A7"}, {1, 21, 1, 1, "7-1"}, {2, 3, 0, 1, "S7"}, {2, 3, 1, 1, "7-1"},
      {0, 21, 0, 1, "7"},   {1, 21, 5, 3, "7-3"}, {1, 21, 5, 65535, "7"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(std::to_string(row.antenna) + "/" + std::to_string(row.service) + " kind " + std::to_string(row.kind));
    EXPECT_EQ(row.text, ChannelText::GetChannelNumberString(TvMode(AntennaMode(row.antenna), ServiceMode(row.service)),
                                                            row.kind, 7, static_cast<uint16_t>(row.minor)));
  }
}

TEST(Port, CombineStringsFillsPlaceholdersAndCutsNeverPastTheSizeNorInsideACharacter) {
  struct Row { const char *format, *s1, *s2; int size; const char* expected; } rows[] = {
      {"Change to %s?", "News", nullptr, 255, "Change to News?"},
      {"%2$s then %1$s", "one", "two", 255, "two then one"},
      {"%s and %s", "a", nullptr, 255, "a and "},
      {"100%% %s", "sure", nullptr, 255, "100% sure"},
      {"%d stays", nullptr, nullptr, 255, "%d stays"},
      {"abcdef", nullptr, nullptr, 4, "abcd"},
      {"ééé", nullptr, nullptr, 5, "éé"},
      {"%s", "xyz", nullptr, 0, ""},
  };
  tvtest::TempTv tv;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.format);
    char out[300];
    std::memset(out, '#', sizeof out);
    EXPECT_EQ(static_cast<int>(std::strlen(row.expected)),
              CombineStrings(out, row.size, row.format, row.s1, row.s2, nullptr, nullptr));
    EXPECT_EQ(row.expected, std::string(out));
    EXPECT_EQ('#', out[row.size + 1]);
  }
}
