#include "TourFile.h"

#include <fstream>
#include <regex>
#include <set>

#include "Errors.h"
#include "Scenario.h"
#include "ScenarioLoader.h"

namespace tvtour {

using nlohmann::json;

namespace {

const char* const kLanguageKey = "db/menu/system/language";
const char* const kFocusZoomKey = "db/menu/system/accessibility/focuszoom";
std::string Folder(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

std::string BaseName(const std::string& path) {
  std::string name = path.substr(path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1);
  if (name.size() > 5 && name.compare(name.size() - 5, 5, ".json") == 0) name.resize(name.size() - 5);
  return name;
}

json ReadJson(const FileReader& reader, const std::string& path, const std::string& what) {
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
json ReadScenario(const FileReader& reader, const json& tour, const std::string& tourPath) {
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
    if (!changes.is_object())
      reader.Refuse("/changes", std::string("expected an object, found ") + changes.type_name());
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

void ReadSettings(const FileReader& reader, const json& settings, Tour& tour) {
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

void ReadStart(const FileReader& reader, const json& start, Tour& tour) {
  reader.Object(start, "/start", {"window_manager", "focus", "timeout"});
  if (start.contains("window_manager"))
    tour.windowManager = reader.Flag(start.at("window_manager"), "/start/window_manager");
  if (start.contains("focus")) {
    const std::string focus = reader.String(start.at("focus"), "/start/focus");
    if (focus != "map" && focus != "first_frame") {
      reader.Refuse("/start/focus", "\"" + focus + "\" is neither \"map\" nor \"first_frame\"");
    }
    tour.focusAfterFirstFrame = focus == "first_frame";
  }
  if (start.contains("timeout"))
    tour.startTimeout = reader.Seconds(start.at("timeout"), "/start/timeout", 0, kLongestWait, false);
}

}  // namespace

Tour ReadTour(const std::string& path) {
  const FileReader reader(path);
  const json document = ReadJson(reader, path, "the tour file");
  reader.Object(document, "", {"name", "about", "scenario", "changes", "settings", "start", "steps"},
                {"scenario", "steps"});
  Tour tour;
  tour.file = path;
  tour.name = document.contains("name") ? reader.NonEmptyString(document.at("name"), "/name") : BaseName(path);
  if (!std::regex_match(tour.name, std::regex("[A-Za-z0-9][A-Za-z0-9._-]*"))) {
    reader.Refuse(document.contains("name") ? "/name" : "",
                  "the tour name \"" + tour.name + "\" names its report folder: letters, digits, '.', '_', '-'");
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
    tour.steps.push_back(ReadStep(reader, steps[i], "/steps/" + std::to_string(i), marks, shots));
  }
  return tour;
}

}  // namespace tvtour
