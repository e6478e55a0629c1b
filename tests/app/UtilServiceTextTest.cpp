// Service lookups and display texts: channel numbers, UTF-16 names, list indexes.
#include <initializer_list>
#include <utility>

#include "UtilTestUtil.h"

namespace {

using namespace utiltest;

json Named(int id, const std::string& name) { return Service(id, 0, 1, {{"name", name}}); }

json Scenario(json services) {
  return {{"tv_mode", {{"antenna", 0}, {"service", 1}}},
          {"number_formats", {{"1", "{major}-{minor}"}, {"-1", "any {major}.{minor}"}}}, {"services", services}};
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

TEST(UtilServiceText, LooksUpAServiceByIdOrTheCurrentServiceWithTheFailureLines) {
  const char* const kNotFound = "pServData not found!";
  struct Row { const char* name; uint64_t id; json fault; bool found; const char* line; int buffer, priority; } byId[] = {
      {"found", 4097, nullptr, true, "Get pServData success!", 0, 4},
      {"id 0", 0, nullptr, false, "serviceId = 0", 2, 5},
      {"unknown id", 999, nullptr, false, kNotFound, 2, 5},
      {"store does not open", 4097, {{"op", "OpenServiceStore"}, {"result", -1}}, false, "OpenServiceStore failed!", 2, 5},
      {"null store", 4097, {{"op", "OpenServiceStore"}, {"null", true}}, false, "OpenServiceStore failed!", 2, 5},
      {"lookup fails", 4097, {{"op", "FindService"}, {"result", 0}}, false, kNotFound, 2, 5},
  }, current[] = {
      {"current found", 0, nullptr, true, "Get current service info success [1]", 0, 5},
      {"result 2", 0, {{"op", "GetCurrentService"}, {"result", 2}}, false, "Get current service info failed [2]", 2, 5},
      {"result 0", 0, {{"op", "GetCurrentService"}, {"result", 0}}, false, "Get current service info failed [0]", 2, 5},
      {"open fails", 0, {{"op", "OpenNavigator"}, {"result", -1}}, false, kFailedOpen, 0, 4},
      {"null navigator", 0, {{"op", "OpenNavigator"}, {"null", true}}, false, "Assertion failed.", 2, 5},
  };
  for (const Row& row : byId) {
    SCOPED_TRACE(row.name);
    auto tv = Tv(Scenario({Service(4097, 0, 1, {{"major", 5}, {"minor", 1}})}), row.fault);
    ServiceData record;
    EXPECT_EQ(row.found, Util::GetServiceData(row.id, &record));
    EXPECT_TRUE(tv->Logged("GetServiceData", row.line, row.buffer, row.priority));
    if (row.found) {
      EXPECT_EQ((std::vector<uint64_t>{4097, 5, 1}), (std::vector<uint64_t>{Attribute(record, ATTR_SERVICE_ID),
                Attribute(record, ATTR_MAJOR_NUMBER), Attribute(record, ATTR_MINOR_NUMBER)}));
    }
    if (row.id == 0) {
      EXPECT_EQ(0, tv->CallCount("OpenServiceStore")) << "id 0 must not reach the middleware";
    }
  }
  for (const Row& row : current) {
    SCOPED_TRACE(row.name);
    auto tv = Tv(Scenario({Service(4097)}), row.fault);
    ServiceData record;
    EXPECT_EQ(row.found, Util::GetCurrentService(Mode(0, 1), record));
    EXPECT_TRUE(tv->Logged("GetCurrentService", row.line, row.buffer, row.priority));
    if (row.found) {
      EXPECT_EQ(4097u, Attribute(record, ATTR_SERVICE_ID));
    }
  }
  auto tv = Tv(Scenario({Service(4097)}));
  EXPECT_FALSE(Util::GetServiceData(4097, nullptr));
  EXPECT_TRUE(tv->AppMessages().empty()) << "a null record fails silently";
}

TEST(UtilServiceText, NumberStringsUseDefaultsAndRejectRecordsWithoutNumber) {
  struct Row { const char* name; ServiceData record; bool null; const char* expected; };
  std::vector<Row> rows;
  rows.push_back({"major and minor", Record({{13, 5}, {14, 1}, {1, 1}}), false, "5-1"});
  rows.push_back({"no minor", Record({{13, 5}, {1, 1}}), false, "5-65535"});
  rows.push_back({"no kind", Record({{13, 7}, {14, 2}}), false, "any 7.2"});
  rows.push_back({"16-bit major all ones", Record({{13, 0x1FFFF}, {14, 3}, {1, 1}}), false, "65535-3"});
  rows.push_back({"32-bit major all ones", Record({{13, 0xFFFFFFFF}, {14, 1}, {1, 1}}), false, ""});
  rows.push_back({"no major", Record({{14, 1}, {1, 1}}), false, ""});
  rows.push_back({"no table", ServiceData(), false, ""});
  rows.push_back({"null", ServiceData(), true, ""});
  auto tv = Tv(Scenario(json::array()));
  for (Row& row : rows) {
    SCOPED_TRACE(row.name);
    ServiceData* record = row.null ? nullptr : &row.record;
    tv->ClearLogs();
    EXPECT_EQ(row.expected, Util::GetServiceNumberString(Mode(0, 1), record));
    EXPECT_EQ(row.expected, Util::GetServiceNumberString(record));
    EXPECT_EQ(std::string(row.expected).empty(), tv->Logged("GetServiceNumberString", "Error parameter", 2, 5));
  }
  const int opensBefore = tv->CallCount("OpenNavigator");
  Util::GetServiceNumberString(nullptr);
  EXPECT_EQ(opensBefore, tv->CallCount("OpenNavigator")) << "no mode is read for a record without number";
}

TEST(UtilServiceText, ServiceNamesLoseLineBreaks) {
  const char *const kTw = "Twstring2String", *const kGet = "GetServiceName", *const kError = "Get service name error";
  // id 0 with noTable: a record without attribute table; null: no record at all.
  struct Row { const char* name; uint64_t id; bool noTable, null; json fault; const char *expected, *function, *line;
               int buffer, priority; } rows[] = {
      {"plain", 4097, false, false, nullptr, "Channel Five", kTw, "convert success [Channel Five]", 0, 4},
      {"line feed inside", 4098, false, false, nullptr, "abcd", kTw, "convert success [abcd]", 0, 4},
      {"only line breaks", 4099, false, false, nullptr, "", kTw, "convert success []", 0, 4},
      {"Greek", 4100, false, false, nullptr, "Ελληνικά Νέα", kTw, "convert success [Ελληνικά Νέα]", 0, 4},
      {"empty name", 4101, false, false, nullptr, "", kTw, "empty name", 0, 4},
      {"unknown service", 777, false, false, nullptr, "", kGet, kError, 2, 5},
      {"no attribute table", 0, true, false, nullptr, "", kGet, kError, 2, 5},
      {"null", 0, false, true, nullptr, "", kGet, "Error parameter", 2, 5},
      {"lookup fails", 4097, false, false, {{"op", "GetServiceName"}, {"result", 0}}, "", kGet, kError, 2, 5},
      {"conversion fails", 4097, false, false, {{"op", "UnicodeToUtf8Buffer"}, {"result", 0}}, "", kTw,
       "convert string failed", 2, 5},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    auto tv = Tv(Scenario({Named(4097, "Channel Five"), Named(4098, "abc\nd"), Named(4099, "\n\r\n"),
                           Named(4100, "Ελληνικά Νέα"), Named(4101, "")}), row.fault);
    ServiceData record = row.noTable ? ServiceData() : Record({{ATTR_SERVICE_ID, row.id}});
    EXPECT_EQ(row.expected, Util::GetServiceName(row.null ? nullptr : &record));
    EXPECT_TRUE(tv->Logged(row.function, row.line, row.buffer, row.priority));
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
  struct Row { const char* name; std::string input; unsigned int outBytes; bool ok; const char* expected; } rows[] = {
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
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(i, Util::GetGenlistItemIndex(
                     elm_genlist_item_append(list, itc, nullptr, nullptr, ELM_GENLIST_ITEM_NONE, nullptr, nullptr)));
  }
  EXPECT_EQ(-1, Util::GetGenlistItemIndex(nullptr));
  EXPECT_TRUE(tv.Logged("GetGenlistItemIndex", "item is NULL", 2, 5));
  elm_genlist_item_class_free(itc);
  evas_object_del(win);
}

}  // namespace
