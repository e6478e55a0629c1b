// The log service writes one line per call in the documented format, and
// TempTv reads the lines back.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <regex>
#include <tuple>

#include "Log.h"
#include "LogService.h"
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
  const char* const rest[] = {" main I antenna-selection: View.cpp: Show(9) > two\\nlines\\\\n", " radio E : no newline",
                              " apps D other: ", " main V t: v", " main F t: f"};
  for (int i = 0; i < 5; ++i) EXPECT_NE(std::string::npos, lines[i + 1].find(rest[i])) << lines[i + 1];

  const std::vector<tvtest::LogLine> parsed = tv.Logs();
  ASSERT_EQ(6u, parsed.size());
  auto fields = [&](int i) { return std::tuple(parsed[i].buffer, parsed[i].priority, parsed[i].tag, parsed[i].message); };
  EXPECT_EQ(std::tuple(2, 5, std::string("antenna-selection"), std::string("Util.cpp: GetTvMode(57) > Get failed 3")),
            fields(0));
  EXPECT_EQ("View.cpp: Show(9) > two\nlines\\n", parsed[1].message);
  EXPECT_EQ(std::tuple(1, 6, std::string(""), std::string("no newline")), fields(2));
  EXPECT_EQ(std::tuple(3, 3, std::string("other"), std::string("")), fields(3));
}

TEST(LogService, CutsALongMessageToItsDocumentedLengthNeverInsideACharacter) {
  tvtest::TempTv tv;
  const std::string a1023(1023, 'a'), a1024(1024, 'a');
  struct Row { std::string message, logged; } rows[] = {
      {a1024, a1024},
      {a1024 + "\n", a1024},  // the trailing newline is not part of the message
      {a1024 + "b", a1024 + " [cut 1 bytes]"},
      {a1023 + "\xc3\xa9", a1023 + " [cut 2 bytes]"},                     // é across the limit
      {a1023 + "\xf0\x9f\x93\xba" + "tail", a1023 + " [cut 8 bytes]"},    // a 4-byte character across it
      {std::string(1 << 20, 'n'), std::string(1024, 'n') + " [cut 1047552 bytes]"},  // a name of a megabyte
      {std::string(600, '\\') + std::string(600, 'x'), std::string(600, '\\') + std::string(424, 'x') + " [cut 176 bytes]"},
  };
  for (const Row& row : rows) __dlog_print(LOG_ID_MAIN, DLOG_WARN, "t", "%s", row.message.c_str());
  const std::vector<tvtest::LogLine> lines = tv.Logs();
  ASSERT_EQ(std::size(rows), lines.size());
  for (size_t i = 0; i < lines.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(rows[i].logged, lines[i].message);
  }
  for (const std::string& raw : RawLines(tv)) EXPECT_LT(raw.size(), 2 * tvsim::kMaxLogMessageBytes + 100);
}
