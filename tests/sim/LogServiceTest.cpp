// The log service writes one line per call in the documented format, and
// TempTv reads the lines back.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <regex>

#include "Log.h"
#include "TempTv.h"

namespace {

std::vector<std::string> RawLines(const tvtest::TempTv& tv) {
  std::ifstream in(tv.LogPath());
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

}  // namespace

TEST(LogService, WritesOneLinePerCallWithTimePidBufferPriorityAndTag) {
  tvtest::TempTv tv;
  __dlog_print(LOG_ID_SYSTEM, DLOG_WARN, "antenna-selection", "%s: %s(%d) > Get failed %d\n", "Util.cpp", "GetTvMode",
               57, 3);
  __dlog_print(LOG_ID_MAIN, DLOG_INFO, "antenna-selection", "%s: %s(%d) > two\nlines\\n\n", "View.cpp", "Show", 9);
  __dlog_print(LOG_ID_RADIO, DLOG_ERROR, "", "no newline");
  __dlog_print(LOG_ID_APPS, DLOG_DEBUG, "other", "%s", "");
  __dlog_print(LOG_ID_MAIN, DLOG_VERBOSE, "t", "v");
  __dlog_print(LOG_ID_MAIN, DLOG_FATAL, "t", "f");

  const std::vector<std::string> lines = RawLines(tv);
  ASSERT_EQ(6u, lines.size());
  const std::string pid = std::to_string(getpid());
  const std::regex first("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z " + pid +
                         " system W antenna-selection: Util\\.cpp: GetTvMode\\(57\\) > Get failed 3$");
  EXPECT_TRUE(std::regex_match(lines[0], first)) << lines[0];
  EXPECT_NE(std::string::npos, lines[1].find(" main I antenna-selection: View.cpp: Show(9) > two\\nlines\\\\n"))
      << lines[1];
  EXPECT_NE(std::string::npos, lines[2].find(" radio E : no newline")) << lines[2];
  EXPECT_NE(std::string::npos, lines[3].find(" apps D other: ")) << lines[3];
  EXPECT_NE(std::string::npos, lines[4].find(" main V t: v")) << lines[4];
  EXPECT_NE(std::string::npos, lines[5].find(" main F t: f")) << lines[5];

  const std::vector<tvtest::LogLine> parsed = tv.Logs();
  ASSERT_EQ(6u, parsed.size());
  EXPECT_EQ(2, parsed[0].buffer);
  EXPECT_EQ(5, parsed[0].priority);
  EXPECT_EQ("antenna-selection", parsed[0].tag);
  EXPECT_EQ("Util.cpp: GetTvMode(57) > Get failed 3", parsed[0].message);
  EXPECT_EQ("View.cpp: Show(9) > two\nlines\\n", parsed[1].message);
  EXPECT_EQ(1, parsed[2].buffer);
  EXPECT_EQ(6, parsed[2].priority);
  EXPECT_EQ("", parsed[2].tag);
  EXPECT_EQ(3, parsed[3].buffer);
  EXPECT_EQ(3, parsed[3].priority);
  EXPECT_EQ("", parsed[3].message);
}

TEST(LogService, TempTvPicksTheApplicationsLinesByFunctionBufferAndPriority) {
  tvtest::TempTv tv;
  __dlog_print(LOG_ID_MAIN, DLOG_WARN, "antenna-selection", "%s: %s(%d) > %s\n", "Util.cpp", "GetTvMode", 57, "a");
  __dlog_print(LOG_ID_SYSTEM, DLOG_WARN, "antenna-selection", "%s: %s(%d) > \n", "Util.cpp", "GetTvMode", 60);
  __dlog_print(LOG_ID_MAIN, DLOG_WARN, "someone-else", "%s: %s(%d) > %s\n", "X.cpp", "GetTvMode", 1, "b");
  EXPECT_EQ((std::vector<std::string>{"a", ""}), tv.AppMessages());
  EXPECT_TRUE(tv.Logged("GetTvMode", "a", LOG_ID_MAIN, DLOG_WARN));
  EXPECT_TRUE(tv.Logged("GetTvMode", "", LOG_ID_SYSTEM, DLOG_WARN));
  EXPECT_FALSE(tv.Logged("GetTvMode", "a", LOG_ID_SYSTEM, DLOG_WARN));
  EXPECT_FALSE(tv.Logged("GetTvMode", "a", LOG_ID_MAIN, DLOG_INFO));
  EXPECT_FALSE(tv.Logged("SetTvMode", "a", LOG_ID_MAIN, DLOG_WARN));
  EXPECT_FALSE(tv.Logged("GetTvMode", "b", LOG_ID_MAIN, DLOG_WARN));
  tv.ClearLogs();
  EXPECT_TRUE(tv.Logs().empty());
  __dlog_print(LOG_ID_MAIN, DLOG_INFO, "antenna-selection", "%s: %s(%d) > after\n", "A.cpp", "F", 2);
  EXPECT_EQ((std::vector<std::string>{"after"}), tv.AppMessages());
}
