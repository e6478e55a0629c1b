// What a tour's expectations compare with what was seen: the TV's state as
// `tvctl show` prints it, the frames the program drew and its log lines. A
// check returns what it saw, or throws StepFailed saying what it saw instead.
#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "LogService.h"
#include "Program.h"

namespace tvtour {

class StepFailed : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// mode, recordings, tuning_changes, kpi_events, recorder_requests, tv.
bool IsStateCheck(const std::string& what);
std::string CheckState(const std::string& what, const nlohmann::json& args, const nlohmann::json& state);

// The lines matching args' pattern (and buffer, priority when given).
int CountLogLines(const nlohmann::json& args, const std::vector<tvsim::LogRecord>& log);
std::string CheckLog(const nlohmann::json& args, const std::vector<tvsim::LogRecord>& log);

// A frame shows the focus args ask for (text and row, each when given).
bool FrameFits(const Frame& frame, const nlohmann::json& args);
std::string CheckFocused(const nlohmann::json& args, const std::vector<Frame>& frames);
// "showed row 2 "Cable" focused", or what else the last frame showed.
std::string LastFrameShowed(const std::vector<Frame>& frames);

std::string Compact(const nlohmann::json& value);

}  // namespace tvtour
