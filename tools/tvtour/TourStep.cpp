#include "TourStep.h"

#include <cmath>
#include <map>
#include <regex>
#include <sstream>

#include "Errors.h"
#include "Faults.h"
#include "JsonCheck.h"

namespace tvtour {

using nlohmann::json;
namespace check = tvsim::json_check;

namespace {

const std::map<std::string, const char*>& Keys() {
  static const std::map<std::string, const char*> keys = {{"Down", "Down"},   {"Up", "Up"},         {"Left", "Left"},
                                                          {"Right", "Right"}, {"Return", "Return"}, {"Back", "Escape"}};
  return keys;
}

const std::set<std::string> kSignals = {"TERM", "INT", "KILL", "HUP"};
const std::set<std::string> kRecordLists = {"tuning_changes", "kpi_events", "recorder_requests"};
const std::set<std::string> kBuffers = {"main", "radio", "system", "apps"};
const std::set<std::string> kPriorities = {"V", "D", "I", "W", "E", "F"};

// Runs a check of tvsim::json_check, whose refusal carries the pointer, as a refusal of this file.
template <typename F>
auto Checked(const FileReader& reader, F&& f) -> decltype(f()) {
  try {
    return f();
  } catch (const tvsim::ScenarioError& e) {
    reader.Refuse(e.Pointer(), e.Problem());
  }
}

std::string Describe(const json& value) { return value.dump(-1, ' ', false, json::error_handler_t::replace); }

// One step: exactly one kind member, then the members that kind takes.
class StepReader {
 public:
  StepReader(const FileReader& reader, const json& value, std::string pointer, std::set<std::string>& marks,
             std::set<std::string>& shots)
      : r(reader), v(value), p(std::move(pointer)), m_marks(marks), m_shots(shots) {}

  Step Read() {
    if (!v.is_object()) r.Refuse(p, std::string("expected a step object, found ") + v.type_name());
    static const char* const kinds[] = {"key", "tvctl", "wait", "expect", "screenshot", "signal"};
    std::vector<std::string> found;
    for (const char* kind : kinds) {
      // "key" is also the member of a tvctl set: the setting's key.
      if (v.contains(kind) && !(v.contains("tvctl") && std::string(kind) == "key")) found.push_back(kind);
    }
    if (found.empty()) {
      r.Refuse(p, "a step needs one of \"key\", \"tvctl\", \"wait\", \"expect\", \"screenshot\", \"signal\"");
    }
    if (found.size() > 1) r.Refuse(p, "one step, one kind: found both \"" + found[0] + "\" and \"" + found[1] + "\"");
    step.pointer = p;
    step.args = v;
    const std::string kind = found[0];
    // "at" is read before "mark": a step may not wait for its own mark.
    if (v.contains("at")) ReadAt();
    if (v.contains("mark")) {
      step.mark = r.NonEmptyString(v.at("mark"), p + "/mark");
      if (!m_marks.insert(step.mark).second) r.Refuse(p + "/mark", "mark \"" + step.mark + "\" is set twice");
    }
    if (v.contains("note")) step.note = r.String(v.at("note"), p + "/note");
    if (kind == "key") Key();
    if (kind == "tvctl") Tvctl();
    if (kind == "wait") Wait();
    if (kind == "expect") Expect();
    if (kind == "screenshot") Screenshot();
    if (kind == "signal") Signal();
    return step;
  }

 private:
  void Members(std::initializer_list<const char*> own, std::initializer_list<const char*> required = {}) {
    std::vector<const char*> allowed(own);
    for (const char* common : {"note", "mark", "at"}) allowed.push_back(common);
    for (const auto& member : v.items()) {
      bool known = false;
      for (const char* name : allowed) known = known || member.key() == name;
      if (!known) r.Refuse(check::Child(p, member.key()), "unknown member \"" + member.key() + "\" for this step");
    }
    for (const char* name : required) {
      if (!v.contains(name)) r.Refuse(p, std::string("missing member \"") + name + "\"");
    }
  }
  std::string Path(const char* member) const { return check::Child(p, member); }

  void ReadAt() {
    const json& at = v.at("at");
    const std::string ap = p + "/at";
    r.Object(at, ap, {"since", "seconds", "tv_seconds"}, {"since"});
    At when;
    when.since = r.NonEmptyString(at.at("since"), ap + "/since");
    if (m_marks.count(when.since) == 0) {
      r.Refuse(ap + "/since",
               "no earlier step sets the mark \"" + when.since + "\" (\"launch\" and \"start\" always exist)");
    }
    if (at.contains("seconds") == at.contains("tv_seconds")) r.Refuse(ap, "give either \"seconds\" or \"tv_seconds\"");
    when.tvSeconds = at.contains("tv_seconds");
    const char* unit = when.tvSeconds ? "tv_seconds" : "seconds";
    when.seconds = r.Seconds(at.at(unit), ap + "/" + unit, 0, kLongestWait, true);
    step.at = when;
  }

  void Key() {
    step.kind = Step::Kind::kKey;
    Members({"key", "delay"});
    step.what = r.String(v.at("key"), Path("key"));
    if (Keys().count(step.what) == 0) {
      r.Refuse(Path("key"), "unknown key \"" + step.what + "\": the keys are Down, Up, Left, Right, Return, Back");
    }
    if (v.contains("delay")) step.delay = r.Seconds(v.at("delay"), Path("delay"), 0, kLongestWait, true);
    step.label = "key " + step.what + (step.delay ? " (after " + Describe(v.at("delay")) + " s)" : "");
  }

  void Tvctl() {
    step.kind = Step::Kind::kTvctl;
    step.what = r.String(v.at("tvctl"), Path("tvctl"));
    const std::string& verb = step.what;
    if (verb == "set") {
      Members({"tvctl", "key", "value"}, {"key", "value"});
      r.NonEmptyString(v.at("key"), Path("key"));
      const json& value = v.at("value");
      if (!value.is_string() && !value.is_number_integer() && !value.is_boolean()) {
        r.Refuse(Path("value"), "expected a string, an integer or true/false");
      }
      step.label = "tvctl set " + v.at("key").get<std::string>() + " " +
                   (value.is_string() ? value.get<std::string>() : value.dump());
    } else if (verb == "tune") {
      Members({"tvctl", "antenna", "service", "screen"}, {"antenna", "service"});
      r.Int(v.at("antenna"), Path("antenna"), 0, 2);
      r.Int(v.at("service"), Path("service"), 0, 255);
      if (v.contains("screen")) r.Int(v.at("screen"), Path("screen"), 0, 15);
      step.label = "tvctl tune " + Describe(v.at("antenna")) + " " + Describe(v.at("service"));
    } else if (verb == "recording") {
      Members({"tvctl", "start", "stop"});
      if (v.contains("start") == v.contains("stop")) r.Refuse(p, "give either \"start\" or \"stop\" with a service id");
      const char* action = v.contains("start") ? "start" : "stop";
      r.Id(v.at(action), Path(action));
      step.label = std::string("tvctl recording ") + action + " " + Describe(v.at(action));
    } else if (verb == "playback") {
      Members({"tvctl", "playing"}, {"playing"});
      r.Int(v.at("playing"), Path("playing"), INT32_MIN, INT32_MAX);
      step.label = "tvctl playback " + Describe(v.at("playing"));
    } else if (verb == "recorder-event") {
      Members({"tvctl", "event", "result", "words"}, {"event", "result"});
      r.Int(v.at("event"), Path("event"), INT32_MIN, UINT32_MAX);
      r.Int(v.at("result"), Path("result"), INT32_MIN, UINT32_MAX);
      std::string words;
      if (v.contains("words")) {
        const json& list = v.at("words");
        if (!list.is_array()) r.Refuse(Path("words"), "expected an array of at most 5 words");
        if (list.size() > 5) r.Refuse(Path("words"), "at most 5 words follow the event and the result");
        for (size_t i = 0; i < list.size(); ++i) {
          r.Int(list[i], check::Child(Path("words"), i), INT32_MIN, UINT32_MAX);
          words += " " + Describe(list[i]);
        }
      }
      step.label = "tvctl recorder-event " + Describe(v.at("event")) + " " + Describe(v.at("result")) + words;
    } else if (verb == "fault") {
      Members({"tvctl", "add", "clear"});
      if (v.contains("add") == v.contains("clear")) r.Refuse(p, "give either \"add\" with a fault or \"clear\"");
      if (v.contains("add")) {
        try {
          tvsim::ParseFault(v.at("add"), Path("add"));
        } catch (const tvsim::ScenarioError& e) {
          r.Refuse(e.Pointer(), e.Problem());
        }
        step.label = "tvctl fault add " + Describe(v.at("add"));
      } else {
        const json& clear = v.at("clear");
        if (!(clear.is_string() && clear.get<std::string>() == "all")) r.Int(clear, Path("clear"), 1, INT64_MAX);
        step.label = "tvctl fault clear " + (clear.is_string() ? std::string("all") : Describe(clear));
      }
    } else {
      r.Refuse(Path("tvctl"),
               "unknown tvctl action \"" + verb + "\": set, tune, recording, playback, recorder-event, fault");
    }
  }

  void Timeout() {
    if (v.contains("timeout")) step.timeout = r.Seconds(v.at("timeout"), Path("timeout"), 0, kLongestWait, false);
  }

  void LogFilter() {
    r.Regex(v.at("pattern"), Path("pattern"));
    if (v.contains("buffer") && kBuffers.count(r.String(v.at("buffer"), Path("buffer"))) == 0) {
      r.Refuse(Path("buffer"), "the buffers are main, radio, system, apps");
    }
    if (v.contains("priority") && kPriorities.count(r.String(v.at("priority"), Path("priority"))) == 0) {
      r.Refuse(Path("priority"), "the priorities are V, D, I, W, E, F");
    }
    if (v.contains("count")) r.Int(v.at("count"), Path("count"), 0, INT32_MAX);
  }

  void Pointer(const char* member) {
    const std::string text = r.String(v.at(member), Path(member));
    try {
      json::json_pointer pointer(text);
    } catch (const json::parse_error&) {
      r.Refuse(Path(member), "\"" + text + "\" is not a JSON pointer (such as /tv_mode/antenna)");
    }
  }

  void Focused() {
    if (v.contains("text")) r.String(v.at("text"), Path("text"));
    if (v.contains("row")) r.Int(v.at("row"), Path("row"), 0, INT32_MAX);
  }

  void Wait() {
    step.kind = Step::Kind::kWait;
    step.what = r.String(v.at("wait"), Path("wait"));
    const std::string& what = step.what;
    std::string detail;
    if (what == "window") {
      Members({"wait", "timeout", "shown"}, {"shown"});
      detail = r.Flag(v.at("shown"), Path("shown")) ? " shown" : " gone";
    } else if (what == "frame") {
      Members({"wait", "timeout", "text", "row"});
      Focused();
      if (v.contains("row")) detail += " row " + Describe(v.at("row"));
      if (v.contains("text")) detail += " focused \"" + v.at("text").get<std::string>() + "\"";
    } else if (what == "settled") {
      Members({"wait", "timeout"});
    } else if (what == "log") {
      Members({"wait", "timeout", "pattern", "buffer", "priority", "count"}, {"pattern"});
      LogFilter();
      detail = " /" + v.at("pattern").get<std::string>() + "/";
    } else if (what == "tv") {
      Members({"wait", "timeout", "pointer", "equals"}, {"pointer", "equals"});
      Pointer("pointer");
      detail = " " + v.at("pointer").get<std::string>() + " = " + Describe(v.at("equals"));
    } else if (what == "exit") {
      Members({"wait", "timeout", "status"});
      if (v.contains("status")) r.Int(v.at("status"), Path("status"), -255, 255);
    } else {
      r.Refuse(Path("wait"), "unknown wait \"" + what + "\": window, frame, settled, log, tv, exit");
    }
    Timeout();
    step.label = "wait " + what + detail;
  }

  void Expect() {
    step.kind = Step::Kind::kExpect;
    step.what = r.String(v.at("expect"), Path("expect"));
    const std::string& what = step.what;
    std::string detail;
    if (what == "mode") {
      Members({"expect", "antenna", "service"}, {"antenna"});
      r.Int(v.at("antenna"), Path("antenna"), -1, 2);
      detail = " antenna " + Describe(v.at("antenna"));
      if (v.contains("service")) {
        r.Int(v.at("service"), Path("service"), -1, 255);
        detail += " service " + Describe(v.at("service"));
      }
    } else if (what == "recordings") {
      Members({"expect", "equals"}, {"equals"});
      const json& ids = v.at("equals");
      if (!ids.is_array()) r.Refuse(Path("equals"), "expected an array of service ids");
      for (size_t i = 0; i < ids.size(); ++i) r.Id(ids[i], check::Child(Path("equals"), i));
      detail = " " + Describe(ids);
    } else if (kRecordLists.count(what) != 0) {
      Members({"expect", "count", "last", "contains"});
      if (!v.contains("count") && !v.contains("last") && !v.contains("contains")) {
        r.Refuse(p, "say what to expect: \"count\", \"last\" or \"contains\"");
      }
      if (v.contains("count")) {
        r.Int(v.at("count"), Path("count"), 0, INT32_MAX);
        detail += " count " + Describe(v.at("count"));
      }
      if (v.contains("last")) {
        r.Object(
            v.at("last"), Path("last"),
            {"screen", "antenna", "service", "status", "event", "code", "desc", "op", "service_id", "caller", "pid"});
        detail += " last " + Describe(v.at("last"));
      }
      if (v.contains("contains")) {
        const json& list = v.at("contains");
        if (!list.is_array()) r.Refuse(Path("contains"), "expected an array of records (objects)");
        for (size_t i = 0; i < list.size(); ++i) {
          if (!list[i].is_object()) r.Refuse(check::Child(Path("contains"), i), "expected a record (object)");
        }
        detail += " contains " + Describe(list);
      }
    } else if (what == "log") {
      Members({"expect", "pattern", "present", "buffer", "priority", "count"}, {"pattern"});
      LogFilter();
      const bool present = !v.contains("present") || r.Flag(v.at("present"), Path("present"));
      if (!present && v.contains("count")) r.Refuse(Path("count"), "\"count\" goes with a present line");
      detail = std::string(present ? "" : " no") + " /" + v.at("pattern").get<std::string>() + "/";
    } else if (what == "exit") {
      Members({"expect", "status"});
      if (v.contains("status")) {
        r.Int(v.at("status"), Path("status"), -255, 255);
        detail = " status " + Describe(v.at("status"));
      }
    } else if (what == "running") {
      Members({"expect"});
    } else if (what == "focused") {
      Members({"expect", "text", "row"});
      if (!v.contains("text") && !v.contains("row")) r.Refuse(p, "say what is focused: \"text\" or \"row\"");
      Focused();
      if (v.contains("row")) detail += " row " + Describe(v.at("row"));
      if (v.contains("text")) detail += " \"" + v.at("text").get<std::string>() + "\"";
    } else if (what == "window") {
      Members({"expect", "shown", "on_screen"}, {"shown"});
      detail = r.Flag(v.at("shown"), Path("shown")) ? " shown" : " gone";
      if (v.contains("on_screen") && r.Flag(v.at("on_screen"), Path("on_screen"))) detail += " on screen";
    } else if (what == "tv") {
      Members({"expect", "pointer", "equals"}, {"pointer", "equals"});
      Pointer("pointer");
      detail = " " + v.at("pointer").get<std::string>() + " = " + Describe(v.at("equals"));
    } else {
      r.Refuse(Path("expect"), "unknown expectation \"" + what +
                                   "\": mode, recordings, tuning_changes, kpi_events, recorder_requests, log, exit, "
                                   "running, focused, window, tv");
    }
    step.label = "expect " + what + detail;
  }

  void Screenshot() {
    step.kind = Step::Kind::kScreenshot;
    Members({"screenshot", "settle"});
    step.what = r.NonEmptyString(v.at("screenshot"), Path("screenshot"));
    if (!std::regex_match(step.what, std::regex("[A-Za-z0-9][A-Za-z0-9._-]*"))) {
      r.Refuse(Path("screenshot"), "a screenshot name is letters, digits, '.', '_' and '-'");
    }
    if (!m_shots.insert(step.what).second)
      r.Refuse(Path("screenshot"), "screenshot \"" + step.what + "\" is taken twice");
    if (v.contains("settle")) r.Flag(v.at("settle"), Path("settle"));
    step.label = "screenshot " + step.what;
  }

  void Signal() {
    step.kind = Step::Kind::kSignal;
    Members({"signal"});
    step.what = r.String(v.at("signal"), Path("signal"));
    if (kSignals.count(step.what) == 0) r.Refuse(Path("signal"), "the signals are TERM, INT, HUP, KILL");
    step.label = "signal " + step.what;
  }

  const FileReader& r;
  const json& v;
  std::string p;
  std::set<std::string>& m_marks;
  std::set<std::string>& m_shots;
  Step step;
};

}  // namespace

void FileReader::Refuse(const std::string& pointer, const std::string& problem) const {
  throw TourError(m_file, pointer, problem);
}

void FileReader::Object(const json& value, const std::string& pointer, std::initializer_list<const char*> allowed,
                        std::initializer_list<const char*> required) const {
  Checked(*this, [&] {
    check::Object(value, pointer, allowed, required);
    return 0;
  });
}

std::string FileReader::String(const json& value, const std::string& pointer) const {
  return Checked(*this, [&] { return check::String(value, pointer); });
}

std::string FileReader::NonEmptyString(const json& value, const std::string& pointer) const {
  const std::string text = String(value, pointer);
  if (text.empty()) Refuse(pointer, "must not be empty");
  return text;
}

bool FileReader::Flag(const json& value, const std::string& pointer) const {
  return Checked(*this, [&] { return check::Bool(value, pointer); });
}

int64_t FileReader::Int(const json& value, const std::string& pointer, int64_t min, int64_t max) const {
  return Checked(*this, [&] { return check::Int(value, pointer, min, max); });
}

uint64_t FileReader::Id(const json& value, const std::string& pointer) const {
  return Checked(*this, [&] { return check::Id(value, pointer); });
}

double FileReader::Seconds(const json& value, const std::string& pointer, double min, double max,
                           bool minAllowed) const {
  if (!value.is_number()) Refuse(pointer, std::string("expected a number of seconds, found ") + value.type_name());
  const double seconds = value.get<double>();
  if (!std::isfinite(seconds) || seconds < min || (!minAllowed && seconds == min) || seconds > max) {
    std::ostringstream range;
    range << seconds << " is out of range " << (minAllowed ? "" : "above ") << min << ".." << max;
    Refuse(pointer, range.str());
  }
  return seconds;
}

std::string FileReader::Regex(const json& value, const std::string& pointer) const {
  const std::string pattern = NonEmptyString(value, pointer);
  try {
    std::regex compiled(pattern);
  } catch (const std::regex_error& e) {
    Refuse(pointer, "not a regular expression: " + std::string(e.what()));
  }
  return pattern;
}

Step ReadStep(const FileReader& reader, const json& value, const std::string& pointer, std::set<std::string>& marks,
              std::set<std::string>& shots) {
  return StepReader(reader, value, pointer, marks, shots).Read();
}

const char* KeysymOfKey(const std::string& key) {
  const auto it = Keys().find(key);
  return it == Keys().end() ? nullptr : it->second;
}

}  // namespace tvtour
