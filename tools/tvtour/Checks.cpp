#include "Checks.h"

#include <regex>

namespace tvtour {

using nlohmann::json;

namespace {

const char* const kBufferNames[] = {"main", "radio", "system", "apps"};
const char kPriorityLetters[] = "??VDIWEF";

[[noreturn]] void Fail(const std::string& why) { throw StepFailed(why); }

// Every member of want is in have with the same value.
bool Matches(const json& have, const json& want) {
  if (!have.is_object()) return false;
  for (const auto& member : want.items()) {
    if (!have.contains(member.key()) || have.at(member.key()) != member.value()) return false;
  }
  return true;
}

std::string CheckRecords(const std::string& what, const json& args, json records) {
  // Without time and seq they read better in a message.
  for (json& record : records) {
    for (const char* noise : {"time", "seq"}) record.erase(noise);
  }
  if (args.contains("count") && records.size() != args.at("count").get<size_t>()) {
    Fail(std::to_string(records.size()) + " " + what + ": " + Compact(records));
  }
  if (args.contains("last") && (records.empty() || !Matches(records.back(), args.at("last")))) {
    Fail("the last of " + what + " is " + (records.empty() ? "none" : Compact(records.back())));
  }
  if (args.contains("contains")) {
    for (const json& want : args.at("contains")) {
      bool found = false;
      for (const json& record : records) found = found || Matches(record, want);
      if (!found) Fail("no record like " + Compact(want) + " in " + Compact(records));
    }
  }
  return std::to_string(records.size()) + " record(s)" + (records.empty() ? "" : ", last " + Compact(records.back()));
}

}  // namespace

std::string Compact(const json& value) { return value.dump(-1, ' ', false, json::error_handler_t::replace); }

bool IsStateCheck(const std::string& what) {
  return what == "mode" || what == "recordings" || what == "tuning_changes" || what == "kpi_events" ||
         what == "recorder_requests" || what == "tv";
}

std::string CheckState(const std::string& what, const json& args, const json& state) {
  if (what == "mode") {
    const json& mode = state.at("tv_mode");
    if (mode.at("antenna") != args.at("antenna") ||
        (args.contains("service") && mode.at("service") != args.at("service"))) {
      Fail("the TV's mode is " + Compact(mode));
    }
    return Compact(mode);
  }
  if (what == "recordings") {
    if (state.at("recordings") != args.at("equals")) Fail("the recordings are " + Compact(state.at("recordings")));
    return Compact(state.at("recordings"));
  }
  if (what == "tv") {
    const std::string text = args.at("pointer").get<std::string>();
    const json::json_pointer pointer(text);
    if (!state.contains(pointer)) Fail(text + " is absent");
    if (state.at(pointer) != args.at("equals")) Fail(text + " is " + Compact(state.at(pointer)));
    return Compact(state.at(pointer));
  }
  return CheckRecords(what, args, state.at(what));
}

int CountLogLines(const json& args, const std::vector<tvsim::LogRecord>& log) {
  const std::regex pattern(args.at("pattern").get<std::string>());
  int count = 0;
  for (const tvsim::LogRecord& record : log) {
    if (args.contains("buffer") && (record.buffer < 0 || record.buffer > 3 ||
                                    args.at("buffer").get<std::string>() != kBufferNames[record.buffer])) {
      continue;
    }
    if (args.contains("priority") && (record.priority < 2 || record.priority > 7 ||
                                      args.at("priority").get<std::string>()[0] != kPriorityLetters[record.priority])) {
      continue;
    }
    if (std::regex_search(record.tag + ": " + record.message, pattern)) ++count;
  }
  return count;
}

std::string CheckLog(const json& args, const std::vector<tvsim::LogRecord>& log) {
  const int count = CountLogLines(args, log);
  const bool present = args.value("present", true);
  if (!present && count > 0) Fail(std::to_string(count) + " log line(s) matched");
  if (present && args.contains("count") && count != args.at("count").get<int>()) {
    Fail(std::to_string(count) + " log line(s) matched, not " + Compact(args.at("count")));
  }
  if (present && count == 0) Fail("no log line matched");
  return std::to_string(count) + " line(s)";
}

bool FrameFits(const Frame& frame, const json& args) {
  return (!args.contains("text") || frame.text == args.at("text").get<std::string>()) &&
         (!args.contains("row") || frame.row == args.at("row").get<int>());
}

std::string CheckFocused(const json& args, const std::vector<Frame>& frames) {
  if (frames.empty()) Fail("no frame drawn yet");
  if (!FrameFits(frames.back(), args)) Fail("the last frame " + LastFrameShowed(frames));
  return LastFrameShowed(frames);
}

std::string LastFrameShowed(const std::vector<Frame>& frames) {
  if (frames.empty()) return "none drawn yet";
  const Frame& last = frames.back();
  if (last.row == 0 && last.text.empty()) return "showed nothing focused";
  return "showed " + (last.row > 0 ? "row " + std::to_string(last.row) + " " : std::string()) + "\"" + last.text +
         "\" focused";
}

}  // namespace tvtour
