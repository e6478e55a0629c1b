// The trace facility as the application's focus callbacks use it: silent by
// default, one line per stored value when TVSIM_TRACE turns it on (to a file,
// as tests/app/PopupsTest.cpp reads it, or with 1 to the platform log).
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "TempTv.h"
#include "Trace.h"

namespace {

using Lines = std::vector<std::string>;

const char kSignature[] = "static void View::m_FocusedCB(void*, Evas_Object*, void*)";

// What a focus callback does: one scope, values stored only while active.
bool TracePoint(trace::TraceCodeLocation& location, const std::vector<const char*>& values) {
  trace::TraceScope scope(location);
  trace::TraceScopeHandler handler = trace::TraceScopeHandler::Instance(scope);
  if (!handler.IsActive()) return false;
  for (const char* value : values) scope.m_Store(value);
  return true;
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

}  // namespace
