// Service lookups and display texts: channel numbers, UTF-16 names, list indexes.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "TempTv.h"
#include "Util.h"

using nlohmann::json;

namespace {

const char* const kFailedOpen = "ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &m_pNavigator) failed";

json Service(int id, const std::string& name, int major = 5, int minor = 1, int kind = 1) {
  return {{"id", id}, {"antenna", 0}, {"service", 1}, {"major", major}, {"minor", minor},
          {"kind", kind}, {"name", name}, {"navigation", {1}}};
}

json Tv(json services) {
  return {{"tv_mode", {{"antenna", 0}, {"service", 1}}},
          {"number_formats", {{"1", "{major}-{minor}"}, {"-1", "any {major}.{minor}"}}},
          {"services", services}};
}

// A record as the middleware hands it out, with only the given attributes.
ServiceData Record(std::initializer_list<std::pair<int, uint64_t>> attributes) {
  ServiceData record;
  auto table = std::make_unique<ServiceAttributeTable>();
  for (const auto& [id, value] : attributes) table->SetAttribute(id, value);
  record.SetAttributeTable(std::move(table));
  return record;
}

uint64_t Attribute(const ServiceData& record, int id) {
  const ServiceAttributeValue* value = record.GetAttributeTable()->GetAttribute(id);
  return value ? *value->GetValuePointer() : 0;
}

// UTF-16 as the middleware keeps it: big-endian bytes in memory on any CPU.
std::u16string BigEndian(std::u16string text) {
  for (char16_t& unit : text) unit = static_cast<char16_t>((unit >> 8) | (unit << 8));
  return text;
}

int CallCount(const tvtest::TempTv& tv, const std::string& op) {
  const json shown = tv.Show();  // the loop must not run over a destroyed temporary
  int count = 0;
  for (const json& call : shown["calls"]) count += call.value("op", "") == op;
  return count;
}

TEST(UtilServiceText, LooksUpAServiceByIdWithTheFailureLines) {
  struct Row {
    const char* name;
    uint64_t id;
    json fault;
    bool found;
    const char* line;
    int buffer, priority;
  } rows[] = {
      {"found", 4097, nullptr, true, "Get pServData success!", 0, 4},
      {"id 0", 0, nullptr, false, "serviceId = 0", 2, 5},
      {"unknown id", 999, nullptr, false, "pServData not found!", 2, 5},
      {"store does not open", 4097, {{"op", "OpenServiceStore"}, {"result", -1}}, false, "OpenServiceStore failed!", 2,
       5},
      {"null store", 4097, {{"op", "OpenServiceStore"}, {"null", true}}, false, "OpenServiceStore failed!", 2, 5},
      {"lookup fails", 4097, {{"op", "FindService"}, {"result", 0}}, false, "pServData not found!", 2, 5},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load(Tv({Service(4097, "Channel Five", 5, 1, 1)}));
    if (!row.fault.is_null()) tv.AddFault(row.fault);
    ServiceData record;
    EXPECT_EQ(row.found, Util::GetServiceData(row.id, &record));
    EXPECT_TRUE(tv.Logged("GetServiceData", row.line, row.buffer, row.priority));
    if (row.found) {
      EXPECT_EQ(4097u, Attribute(record, ATTR_SERVICE_ID));
      EXPECT_EQ(5u, Attribute(record, ATTR_MAJOR_NUMBER));
      EXPECT_EQ(1u, Attribute(record, ATTR_MINOR_NUMBER));
    }
    if (row.id == 0) {
      EXPECT_EQ(0, CallCount(tv, "OpenServiceStore")) << "id 0 must not reach the middleware";
    }
  }
  tvtest::TempTv tv;
  tv.Load(Tv({Service(4097, "Channel Five")}));
  EXPECT_FALSE(Util::GetServiceData(4097, nullptr));
  EXPECT_TRUE(tv.AppMessages().empty()) << "a null record fails silently";
}

TEST(UtilServiceText, ReadsTheCurrentServiceOfAMode) {
  struct Row {
    const char* name;
    json fault;
    bool found;
    const char* line;
    int buffer, priority;
  } rows[] = {
      {"found", nullptr, true, "Get current service info success [1]", 0, 5},
      {"result 2", {{"op", "GetCurrentService"}, {"result", 2}}, false, "Get current service info failed [2]", 2, 5},
      {"result 0", {{"op", "GetCurrentService"}, {"result", 0}}, false, "Get current service info failed [0]", 2, 5},
      {"open fails", {{"op", "OpenNavigator"}, {"result", -1}}, false, kFailedOpen, 0, 4},
      {"null navigator", {{"op", "OpenNavigator"}, {"null", true}}, false, "Assertion failed.", 2, 5},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load(Tv({Service(4097, "Channel Five")}));
    if (!row.fault.is_null()) tv.AddFault(row.fault);
    ServiceData record;
    EXPECT_EQ(row.found, Util::GetCurrentService(TvMode(ANTENNA_MODE_0, static_cast<ServiceMode>(1)), record));
    EXPECT_TRUE(tv.Logged("GetCurrentService", row.line, row.buffer, row.priority));
    if (row.found) {
      EXPECT_EQ(4097u, Attribute(record, ATTR_SERVICE_ID));
    }
  }
}

TEST(UtilServiceText, NumberStringsUseDefaultsAndRejectRecordsWithoutNumber) {
  struct Row {
    const char* name;
    ServiceData record;
    bool null;
    const char* expected;
  };
  std::vector<Row> rows;
  rows.push_back({"major and minor", Record({{13, 5}, {14, 1}, {1, 1}}), false, "5-1"});
  rows.push_back({"no minor", Record({{13, 5}, {1, 1}}), false, "5-65535"});
  rows.push_back({"no kind", Record({{13, 7}, {14, 2}}), false, "any 7.2"});
  rows.push_back({"16-bit major all ones", Record({{13, 0x1FFFF}, {14, 3}, {1, 1}}), false, "65535-3"});
  rows.push_back({"32-bit major all ones", Record({{13, 0xFFFFFFFF}, {14, 1}, {1, 1}}), false, ""});
  rows.push_back({"no major", Record({{14, 1}, {1, 1}}), false, ""});
  rows.push_back({"no table", ServiceData(), false, ""});
  rows.push_back({"null", ServiceData(), true, ""});
  tvtest::TempTv tv;
  tv.Load(Tv(json::array()));
  for (Row& row : rows) {
    SCOPED_TRACE(row.name);
    ServiceData* record = row.null ? nullptr : &row.record;
    tv.ClearLogs();
    EXPECT_EQ(row.expected, Util::GetServiceNumberString(TvMode(ANTENNA_MODE_0, static_cast<ServiceMode>(1)), record));
    EXPECT_EQ(row.expected, Util::GetServiceNumberString(record));
    const bool rejected = std::string(row.expected).empty();
    EXPECT_EQ(rejected, tv.Logged("GetServiceNumberString", "Error parameter", 2, 5));
  }
  const int opensBefore = CallCount(tv, "OpenNavigator");
  Util::GetServiceNumberString(nullptr);
  EXPECT_EQ(opensBefore, CallCount(tv, "OpenNavigator")) << "no mode is read for a record without number";
}

TEST(UtilServiceText, ServiceNamesLoseLineBreaks) {
  struct Row {
    const char* name;
    uint64_t id;
    bool noTable, null;
    json fault;
    const char* expected;
    const char *function, *line;
    int buffer, priority;
  } rows[] = {
      {"plain", 4097, false, false, nullptr, "Channel Five", "Twstring2String", "convert success [Channel Five]", 0, 4},
      {"line feed inside", 4098, false, false, nullptr, "abcd", "Twstring2String", "convert success [abcd]", 0, 4},
      {"only line breaks", 4099, false, false, nullptr, "", "Twstring2String", "convert success []", 0, 4},
      {"Greek", 4100, false, false, nullptr, "Ελληνικά Νέα", "Twstring2String", "convert success [Ελληνικά Νέα]", 0,
       4},
      {"empty name", 4101, false, false, nullptr, "", "Twstring2String", "empty name", 0, 4},
      {"unknown service", 777, false, false, nullptr, "", "GetServiceName", "Get service name error", 2, 5},
      {"no attribute table", 0, true, false, nullptr, "", "GetServiceName", "Get service name error", 2, 5},
      {"null", 0, false, true, nullptr, "", "GetServiceName", "Error parameter", 2, 5},
      {"lookup fails", 4097, false, false, {{"op", "GetServiceName"}, {"result", 0}}, "", "GetServiceName",
       "Get service name error", 2, 5},
      {"conversion fails", 4097, false, false, {{"op", "UnicodeToUtf8Buffer"}, {"result", 0}}, "", "Twstring2String",
       "convert string failed", 2, 5},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load(Tv({Service(4097, "Channel Five"), Service(4098, "abc\nd"), Service(4099, "\n\r\n"),
                Service(4100, "Ελληνικά Νέα"), Service(4101, "")}));
    if (!row.fault.is_null()) tv.AddFault(row.fault);
    ServiceData record = row.noTable ? ServiceData() : Record({{ATTR_SERVICE_ID, row.id}});
    EXPECT_EQ(row.expected, Util::GetServiceName(row.null ? nullptr : &record));
    EXPECT_TRUE(tv.Logged(row.function, row.line, row.buffer, row.priority));
  }
}

TEST(UtilServiceText, OnlyBigEndianLineBreaksAreRemovedInPlace) {
  tvtest::TempTv tv;
  // "ab", a carriage return stored little-endian (bytes 0D 00: U+0D00, not a break), "c".
  std::u16string text = BigEndian(u"ab") + static_cast<char16_t>(0x000D) + BigEndian(u"c\r\n");
  EXPECT_EQ("ab\xE0\xB4\x80" "c", Util::Twstring2String(text));

  // Removal shortens the text and pads to its old length; beyond the terminator nothing changes.
  std::u16string units = BigEndian(u"A\nB\rC") + u'\0' + BigEndian(u"X");
  std::vector<unsigned short> buffer(units.begin(), units.end());
  Util::TransStrExceptLF(buffer.data());
  std::u16string expected = BigEndian(u"ABC") + u'\0' + u'\0' + u'\0' + BigEndian(u"X");
  EXPECT_EQ(std::vector<unsigned short>(expected.begin(), expected.end()), buffer);

  Util::TransStrExceptLF(nullptr);
  EXPECT_TRUE(tv.Logged("TransStrExceptLF", "srv Is NUll", 2, 5));
}

TEST(UtilServiceText, Unicode2Utf8ConvertsBigEndianOrFailsWithTheConverterResult) {
  struct Row {
    const char* name;
    std::string input;  // raw bytes
    unsigned int outBytes;
    bool ok;
    const char* expected;
  } rows[] = {
      {"Latin and euro", std::string("\0h\0\xE9\x20\xAC", 6), 16, true, "h\xC3\xA9\xE2\x82\xAC"},
      {"lone surrogate", std::string("\xD8\x00\0a", 4), 16, false, ""},
      {"output too small", std::string("\0a\0b\0c\0d", 8), 2, false, "ab"},
      {"odd byte count", std::string("\0a\0", 3), 16, false, "a"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    std::string input = row.input;
    char out[32] = {};
    EXPECT_EQ(row.ok, Util::Unicode2Utf8(out, row.outBytes, input.data(), input.size()));
    EXPECT_STREQ(row.expected, out);
    EXPECT_EQ(!row.ok, tv.Logged("Unicode2Utf8", "iconv failed: -1", 2, 5));
  }
  tvtest::TempTv tv;
  char out[4] = {};
  EXPECT_FALSE(Util::Unicode2Utf8(out, sizeof out, nullptr, 2));
  EXPECT_TRUE(tv.Logged("Unicode2Utf8", "Assertion failed.", 2, 5));
}

TEST(UtilServiceText, GenlistIndexCountsFromZero) {
  tvtest::TempTv tv;
  Evas_Object* win = elm_win_add(nullptr, "index-test", ELM_WIN_BASIC);
  Evas_Object* list = elm_genlist_add(win);
  Elm_Genlist_Item_Class* itc = elm_genlist_item_class_new();
  itc->item_style = "default";
  std::vector<Elm_Object_Item*> items;
  for (int i = 0; i < 3; ++i)
    items.push_back(elm_genlist_item_append(list, itc, nullptr, nullptr, ELM_GENLIST_ITEM_NONE, nullptr, nullptr));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(i, Util::GetGenlistItemIndex(items[i]));
  EXPECT_EQ(-1, Util::GetGenlistItemIndex(nullptr));
  EXPECT_TRUE(tv.Logged("GetGenlistItemIndex", "item is NULL", 2, 5));
  elm_genlist_item_class_free(itc);
  evas_object_del(win);
}

}  // namespace
