// Runs one tour once: a fresh TV in its own folder, the program started and
// given the focus the way the tour asks, then its steps in order, each with a
// verdict. The first failed step ends the run; later steps are not run.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "Desk.h"
#include "TourFile.h"

namespace tvtour {

struct StepResult {
  enum class Verdict { kPassed, kFailed, kNotRun };
  std::string label;
  std::string note;
  Verdict verdict = Verdict::kNotRun;
  std::string message;     // what was seen (passed) or what went wrong (failed)
  double atSeconds = 0;    // since the launch, when it ended
  std::string screenshot;  // file name in the run's folder
};

struct RunResult {
  bool passed = false;
  std::string folder;
  std::string start;    // how the program started and got the focus
  std::string failure;  // the failed step and why, one line
  std::vector<StepResult> steps;
  std::string failureShot;  // the screen when a step failed
  std::string ended;        // how the program ended
  nlohmann::json before, after;
  double seconds = 0;
};

struct RunnerOptions {
  std::string app;  // the antenna-selection executable
  bool verbose = true;
};

RunResult RunTour(Desk& desk, const Tour& tour, const std::string& folder, const RunnerOptions& options,
                  std::ostream& progress);

}  // namespace tvtour
