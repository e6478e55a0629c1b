// A tour file: the TV to start from, settings, how the window gets the focus,
// then steps in order (docs/tours.md). Read and checked in full before anything
// runs; a mistake is refused with the file, the JSON pointer and the problem.
#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tvtour {

class TourError : public std::runtime_error {
 public:
  TourError(const std::string& file, const std::string& pointer, const std::string& problem)
      : std::runtime_error(file + ": " + (pointer.empty() ? "/" : pointer) + ": " + problem), m_pointer(pointer) {}
  const std::string& Pointer() const { return m_pointer; }

 private:
  std::string m_pointer;
};

// When a step is due: seconds after a mark, in real time or in the TV's time
// (multiplied by the tour's time scale).
struct At {
  std::string since;
  double seconds = 0;
  bool tvSeconds = false;
};

struct Step {
  enum class Kind { kKey, kTvctl, kWait, kExpect, kScreenshot, kSignal };
  Kind kind = Kind::kKey;
  std::string what;         // key name, tvctl verb, wait or expectation kind, screenshot name, signal name
  nlohmann::json args;      // the step's object as written (checked)
  std::string pointer;      // where it is in the file, for messages
  std::string label;        // one line for the progress output and the report
  std::string note;
  std::string mark;         // names the moment this step saw or did its thing
  std::optional<At> at;
  std::optional<double> delay;  // keys: seconds before it; absent: once the screen is still
  double timeout = 10;          // waits
};

struct Tour {
  std::string file;       // as given on the command line
  std::string name;       // file name without .json unless the file names it
  std::string about;
  nlohmann::json scenario;  // complete, settings included, checked
  double timeScale = 1;
  bool windowManager = false;
  bool focusAfterFirstFrame = false;  // else at map
  double startTimeout = 20;
  std::vector<Step> steps;
};

// Throws TourError.
Tour ReadTour(const std::string& path);

// The viewer's key names and the X key each one is.
const char* KeysymOfKey(const std::string& key);

}  // namespace tvtour
