// The trace facility as the application's focus callbacks use it: silent by
// default, one line per stored value when TVSIM_TRACE turns it on.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "TempTv.h"
#include "Trace.h"

namespace {

using Lines = std::vector<std::string>;

const char kSignature[] = "static void View::m_FocusedCB(void*, Evas_Object*, void*)";

// What a focus callback does: one scope, values stored only while active.
bool TracePoint(trace::TraceCodeLocation& location, const std::vector<const char*>& values,
                const trace::TraceCondition* condition = nullptr) {
  trace::TraceScope scope(location);
  scope.SetCondition(condition);
  trace::TraceScopeHandler handler = trace::TraceScopeHandler::Instance(scope);
  if (!handler.IsActive()) return false;
  for (const char* value : values) scope.m_Store(value);
  return true;
}

Lines ReadLines(const std::string& path) {
  Lines lines;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

class TraceTest : public ::testing::Test {
 protected:
  void SetUp() override { trace::TracePattern::Instance()->Clear(); }
  void TearDown() override { unsetenv("TVSIM_TRACE"); }
};

TEST_F(TraceTest, IsSilentUnlessTurnedOnAndGoesToThePlatformLogWithOne) {
  tvtest::TempTv tv;
  static trace::TraceCodeLocation location("src/View.cpp", 42, kSignature);
  for (const char* setting : {static_cast<const char*>(nullptr), "", "0", "1"}) {
    SCOPED_TRACE(setting ? setting : "(unset)");
    if (setting) setenv("TVSIM_TRACE", setting, 1);
    EXPECT_EQ(setting && std::string(setting) == "1", TracePoint(location, {setting ? setting : "unset"}));
  }
  Lines traced;
  for (const tvtest::LogLine& line : tv.Logs()) {
    if (line.tag == "tvsim-trace") traced.push_back(line.message);
  }
  EXPECT_EQ(traced, (Lines{std::string("src/View.cpp:42 ") + kSignature + " item 0 char const* \"1\""}));
}

TEST_F(TraceTest, WritesEachStoredValueWithItsLocationIndexAndTypeAndQueuesTheLatest) {
  tvtest::TempTv tv;
  const std::string file = tv.Dir() + "/trace.txt";
  setenv("TVSIM_TRACE", file.c_str(), 1);
  static trace::TraceCodeLocation first("src/View.cpp", 1270, kSignature);
  static trace::TraceCodeLocation second("src/List.cpp", 8, "void List::Cb()");

  ASSERT_TRUE(TracePoint(first, {"Air", nullptr, "say \"hi\"\n"}));
  ASSERT_TRUE(TracePoint(second, {"Cable"}));
  const trace::TraceCondition onlySecondItem({1});
  ASSERT_TRUE(TracePoint(first, {"skipped", "kept", "skipped too"}, &onlySecondItem));

  const std::string at = std::string("src/View.cpp:1270 ") + kSignature;
  const Lines expected = {
      at + " item 0 char const* \"Air\"",
      at + " item 1 char const* null",
      at + " item 2 char const* \"say \\\"hi\\\"\\x0a\"",
      "src/List.cpp:8 void List::Cb() item 0 char const* \"Cable\"",
      at + " item 1 char const* \"kept\"",
  };
  EXPECT_EQ(ReadLines(file), expected);
  const auto queue = trace::TracePattern::Instance()->Queue();
  EXPECT_EQ(Lines(queue.begin(), queue.end()), expected);
}

}  // namespace
