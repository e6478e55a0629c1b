// The built program started where no window can be made: it says why, ends at
// once with the framework's error, and leaves the TV to the next start. The
// program on a display is what the tours (tours/) drive.
#include <gtest/gtest.h>

#include "TempTv.h"

TEST(Program, WithoutADisplayItEndsAtOnceSayingWhyAndTheTvServesTheNextStart) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  const std::string program = std::string(TV_BINARY_DIR) + "/antenna-selection";
  // Display 64999 has no server here: no socket, no lock file.
  const std::pair<const char*, const char*> rows[] = {
      {"env -u DISPLAY", "no window can be made: DISPLAY is not set"},
      {"DISPLAY=:64999", "display \":64999\" cannot be opened"},
      {"DISPLAY=:64999.1", "display \":64999.1\" cannot be opened"},
  };
  for (const auto& [environment, logged] : rows) {
    SCOPED_TRACE(environment);
    tv.ClearLogs();
    EXPECT_EQ(3, tv.Run(std::string(environment) + " ELM_ENGINE= WAYLAND_DISPLAY= timeout 20 " + program + " 2>&1"));
    bool said = false, failed = false;
    for (const tvtest::LogLine& line : tv.Logs()) {
      said |= line.tag == "tvsim" && line.buffer == 2 && line.priority == 6 && line.message.find(logged) != std::string::npos;
      failed |= line.message.find("app_efl_main() is failed. err=3") != std::string::npos;
    }
    EXPECT_TRUE(said) << logged;
    EXPECT_TRUE(failed);
  }
  // No single-instance claim was left behind: a start in process becomes the TV's application.
  EXPECT_EQ(0, tv.Run("ELM_ENGINE=buffer TVSIM_TIME_SCALE=0.001 timeout 20 " + program + " 2>&1"));
  EXPECT_TRUE(tv.Show()["tuning_changes"].empty());
}
