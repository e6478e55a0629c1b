// Test main: the buffer engine unless a display is asked for, the platform's
// toolkit set-up, and a test failure for every ERR or CRI line EFL writes.
#include <Elementary.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "Toolkit.h"

namespace {

void FailOnErrorLines(const Eina_Log_Domain* domain, Eina_Log_Level level, const char* file, const char* fn,
                      int line, const char* fmt, void* data, va_list args) {
  va_list copy;
  va_copy(copy, args);
  eina_log_print_cb_stderr(domain, level, file, fn, line, fmt, data, copy);
  va_end(copy);
  if (level <= EINA_LOG_LEVEL_ERR && ::testing::UnitTest::GetInstance()->current_test_info() != nullptr) {
    ADD_FAILURE() << "EFL logged an error in domain " << (domain ? domain->name : "?") << " at " << file << ":"
                  << line;
  }
}

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  setenv("ELM_ENGINE", "buffer", 0);
  // Until a test makes its own TV (tvtest::TempTv), the platform's set-up reads
  // settings from a TV of the process's own, never the developer's default one.
  char dir[] = "/tmp/tvtest-main-XXXXXX";
  const bool ownTv = std::getenv("TVSIM_DB") == nullptr && mkdtemp(dir) != nullptr;
  if (ownTv) {
    setenv("TVSIM_DB", (std::string(dir) + "/tv.db").c_str(), 1);
    setenv("TVSIM_LOG", (std::string(dir) + "/tv.log").c_str(), 1);
  }
  tvsim::PrepareToolkitEnvironment();
  elm_init(argc, argv);
  eina_log_print_cb_set(FailOnErrorLines, nullptr);
  tvsim::AddPlatformTheme();
  const int result = RUN_ALL_TESTS();
  if (ownTv) std::filesystem::remove_all(dir);
  if (elm_shutdown() != 0) {
    fprintf(stderr, "elm_shutdown did not balance elm_init\n");
    return result == 0 ? 1 : result;
  }
  return result;
}
