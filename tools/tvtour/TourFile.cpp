#include "TourFile.h"

#include <cmath>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "Errors.h"
#include "Faults.h"
#include "JsonCheck.h"
#include "Scenario.h"
#include "ScenarioLoader.h"

namespace tvtour {

using nlohmann::json;
namespace check = tvsim::json_check;

namespace {

const char* const kLanguageKey = "db/menu/system/language";
const char* const kFocusZoomKey = "db/menu/system/accessibility/focuszoom";
const double kLongestWait = 3600;

const std::map<std::string, const char*>& Keys() {
  static const std::map<std::string, const char*> keys = {
      {"Down", "Down"}, {"Up", "Up"}, {"Left", "Left"}, {"Right", "Right"}, {"Return", "Return"}, {"Back", "Escape"}};
  return keys;
}

const std::set<std::string> kSignals = {"TERM", "INT", "KILL", "HUP"};
const std::set<std::string> kRecordLists = {"tuning_changes", "kpi_events", "recorder_requests"};
const std::set<std::string> kBuffers = {"main", "radio", "system", "apps"};
const std::set<std::string> kPriorities = {"V", "D", "I", "W", "E", "F"};

// Reads the tour file's members, turning the simulator's checks into refusals
// that name this file.
class Reader {
 public:
  explicit Reader(std::string file) : m_file(std::move(file)) {}

  [[noreturn]] void Refuse(const std::string& pointer, const std::string& problem) const {
    throw TourError(m_file, pointer, problem);
  }

  // Runs a check of tvsim::json_check, whose refusal carries the pointer.
  template <typename F>
  auto Checked(F&& f) const -> decltype(f()) {
    try {
      return f();
    } catch (const tvsim::ScenarioError& e) {
      Refuse(e.Pointer(), e.Problem());
    }
  }

  void Object(const json& value, const std::string& pointer, std::initializer_list<const char*> allowed,
              std::initializer_list<const char*> required = {}) const {
    Checked([&] {
      check::Object(value, pointer, allowed, required);
      return 0;
    });
  }
  std::string String(const json& value, const std::string& pointer) const {
    return Checked([&] { return check::String(value, pointer); });
  }
  std::string NonEmptyString(const json& value, const std::string& pointer) const {
    const std::string text = String(value, pointer);
    if (text.empty()) Refuse(pointer, "must not be empty");
    return text;
  }
  bool Bool(const json& value, const std::string& pointer) const {
    return Checked([&] { return check::Bool(value, pointer); });
  }
  int64_t Int(const json& value, const std::string& pointer, int64_t min, int64_t max) const {
    return Checked([&] { return check::Int(value, pointer, min, max); });
  }
  double Seconds(const json& value, const std::string& pointer, double min, double max, bool minAllowed) const {
    if (!value.is_number()) Refuse(pointer, std::string("expected a number of seconds, found ") + value.type_name());
    const double seconds = value.get<double>();
    if (!std::isfinite(seconds) || seconds < min || (!minAllowed && seconds == min) || seconds > max) {
      std::ostringstream range;
      range << seconds << " is out of range " << (minAllowed ? "" : "above ") << min << ".." << max;
      Refuse(pointer, range.str());
    }
    return seconds;
  }
  std::string Regex(const json& value, const std::string& pointer) const {
    const std::string pattern = NonEmptyString(value, pointer);
    try {
      std::regex compiled(pattern);
    } catch (const std::regex_error& e) {
      Refuse(pointer, "not a regular expression: " + std::string(e.what()));
    }
    return pattern;
  }

  const std::string& File() const { return m_file; }

 private:
  std::string m_file;
};

std::string Folder(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

std::string BaseName(const std::string& path) {
  std::string name = path.substr(path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1);
  if (name.size() > 5 && name.compare(name.size() - 5, 5, ".json") == 0) name.resize(name.size() - 5);
  return name;
}

json ReadJson(const Reader& reader, const std::string& path, const std::string& what) {
  std::ifstream in(path);
  if (!in) reader.Refuse("", "cannot read " + what);
  try {
    return json::parse(in);
  } catch (const json::parse_error& e) {
    reader.Refuse("", what + " is not JSON: " + e.what());
  }
}

// The scenario: a file (relative to the tour), or inline; then "changes" as a
// JSON merge patch; then the tour's settings. Checked whole by the simulator.
json ReadScenario(const Reader& reader, const json& tour, const std::string& tourPath) {
  const json& given = tour.at("scenario");
  json scenario;
  std::string scenarioFile;
  if (given.is_string()) {
    const std::string name = reader.NonEmptyString(given, "/scenario");
    scenarioFile = name[0] == '/' ? name : Folder(tourPath) + "/" + name;
    try {
      scenario = tvsim::ReadScenarioFile(scenarioFile);
    } catch (const tvsim::ScenarioError& e) {
      reader.Refuse("/scenario", e.Problem() + " (" + scenarioFile + ")");
    }
  } else if (given.is_object()) {
    scenario = given;
  } else {
    reader.Refuse("/scenario", std::string("expected a file name or a scenario object, found ") + given.type_name());
  }
  json changes = json::object();
  if (tour.contains("changes")) {
    changes = tour.at("changes");
    if (!changes.is_object()) reader.Refuse("/changes", std::string("expected an object, found ") + changes.type_name());
    scenario.merge_patch(changes);
  }
  if (!scenario.is_object()) reader.Refuse("/scenario", "the scenario is not an object");
  if (tour.contains("settings")) {
    const json& settings = tour.at("settings");
    if (settings.contains("language")) scenario["settings"][kLanguageKey] = settings.at("language");
    if (settings.contains("focus_zoom")) {
      const json& zoom = settings.at("focus_zoom");
      scenario["settings"][kFocusZoomKey] = zoom.is_boolean() ? json(zoom.get<bool>() ? 1 : 0) : zoom;
    }
  }
  try {
    tvsim::ParseScenario(scenario);
  } catch (const tvsim::ScenarioError& e) {
    // Name the place the mistake was written.
    const std::string pointer = e.Pointer();
    const bool inChanges = !pointer.empty() && changes.contains(json::json_pointer(pointer));
    if (inChanges) reader.Refuse("/changes" + pointer, e.Problem());
    if (!scenarioFile.empty()) throw TourError(scenarioFile, pointer, e.Problem());
    reader.Refuse("/scenario" + pointer, e.Problem());
  }
  return scenario;
}

void ReadSettings(const Reader& reader, const json& settings, Tour& tour) {
  reader.Object(settings, "/settings", {"language", "focus_zoom", "time_scale"});
  if (settings.contains("language")) {
    const std::string language = reader.String(settings.at("language"), "/settings/language");
    if (!std::regex_match(language, std::regex("[a-z]{2}_[A-Z]{2}"))) {
      reader.Refuse("/settings/language", "\"" + language + "\" is not a language such as en_US, ar_AE or de_DE");
    }
  }
  if (settings.contains("focus_zoom") && !settings.at("focus_zoom").is_boolean()) {
    reader.Int(settings.at("focus_zoom"), "/settings/focus_zoom", 0, 1);
  }
  if (settings.contains("time_scale")) {
    tour.timeScale = reader.Seconds(settings.at("time_scale"), "/settings/time_scale", 0, 10, false);
  }
}

void ReadStart(const Reader& reader, const json& start, Tour& tour) {
  reader.Object(start, "/start", {"window_manager", "focus", "timeout"});
  if (start.contains("window_manager")) tour.windowManager = reader.Bool(start.at("window_manager"), "/start/window_manager");
  if (start.contains("focus")) {
    const std::string focus = reader.String(start.at("focus"), "/start/focus");
    if (focus != "map" && focus != "first_frame") {
      reader.Refuse("/start/focus", "\"" + focus + "\" is neither \"map\" nor \"first_frame\"");
    }
    tour.focusAfterFirstFrame = focus == "first_frame";
  }
  if (start.contains("timeout")) tour.startTimeout = reader.Seconds(start.at("timeout"), "/start/timeout", 0, kLongestWait, false);
}

std::string Describe(const json& value) { return value.dump(-1, ' ', false, json::error_handler_t::replace); }

// One step: exactly one kind member, then the members that kind takes.
class StepReader {
 public:
  StepReader(const Reader& reader, const json& value, std::string pointer, std::set<std::string>& marks,
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
      r.Refuse(ap + "/since", "no earlier step sets the mark \"" + when.since + "\" (\"launch\" and \"start\" always exist)");
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
      step.label = "tvctl set " + v.at("key").get<std::string>() + " " + (value.is_string() ? value.get<std::string>() : value.dump());
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
      r.Checked([&] { return check::Id(v.at(action), Path(action)); });
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
      r.Refuse(Path("tvctl"), "unknown tvctl action \"" + verb + "\": set, tune, recording, playback, recorder-event, fault");
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
      detail = r.Bool(v.at("shown"), Path("shown")) ? " shown" : " gone";
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
      for (size_t i = 0; i < ids.size(); ++i) r.Checked([&] { return check::Id(ids[i], check::Child(Path("equals"), i)); });
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
        r.Object(v.at("last"), Path("last"), {"screen", "antenna", "service", "status", "event", "code", "desc", "op",
                                            "service_id", "caller", "pid"});
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
      const bool present = !v.contains("present") || r.Bool(v.at("present"), Path("present"));
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
      Members({"expect", "shown"}, {"shown"});
      detail = r.Bool(v.at("shown"), Path("shown")) ? " shown" : " gone";
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
    if (!m_shots.insert(step.what).second) r.Refuse(Path("screenshot"), "screenshot \"" + step.what + "\" is taken twice");
    if (v.contains("settle")) r.Bool(v.at("settle"), Path("settle"));
    step.label = "screenshot " + step.what;
  }

  void Signal() {
    step.kind = Step::Kind::kSignal;
    Members({"signal"});
    step.what = r.String(v.at("signal"), Path("signal"));
    if (kSignals.count(step.what) == 0) r.Refuse(Path("signal"), "the signals are TERM, INT, HUP, KILL");
    step.label = "signal " + step.what;
  }

  const Reader& r;
  const json& v;
  std::string p;
  std::set<std::string>& m_marks;
  std::set<std::string>& m_shots;
  Step step;
};

}  // namespace

const char* KeysymOfKey(const std::string& key) {
  const auto it = Keys().find(key);
  return it == Keys().end() ? nullptr : it->second;
}

Tour ReadTour(const std::string& path) {
  const Reader reader(path);
  const json document = ReadJson(reader, path, "the tour file");
  reader.Object(document, "", {"name", "about", "scenario", "changes", "settings", "start", "steps"}, {"scenario", "steps"});
  Tour tour;
  tour.file = path;
  tour.name = document.contains("name") ? reader.NonEmptyString(document.at("name"), "/name") : BaseName(path);
  if (!std::regex_match(tour.name, std::regex("[A-Za-z0-9][A-Za-z0-9._-]*"))) {
    reader.Refuse(document.contains("name") ? "/name" : "", "the tour name \"" + tour.name +
                                                              "\" names its report folder: letters, digits, '.', '_', '-'");
  }
  if (document.contains("about")) tour.about = reader.String(document.at("about"), "/about");
  if (document.contains("settings")) ReadSettings(reader, document.at("settings"), tour);
  if (document.contains("start")) ReadStart(reader, document.at("start"), tour);
  tour.scenario = ReadScenario(reader, document, path);

  const json& steps = document.at("steps");
  if (!steps.is_array()) reader.Refuse("/steps", std::string("expected an array of steps, found ") + steps.type_name());
  if (steps.empty()) reader.Refuse("/steps", "a tour needs at least one step");
  std::set<std::string> marks = {"launch", "start"};
  std::set<std::string> shots;
  for (size_t i = 0; i < steps.size(); ++i) {
    tour.steps.push_back(StepReader(reader, steps[i], "/steps/" + std::to_string(i), marks, shots).Read());
  }
  return tour;
}

}  // namespace tvtour
