// A tour file: the TV to start from, settings, how the window gets the focus,
// then steps in order (docs/tours.md). Read and checked in full before anything
// runs; a mistake is refused with the file, the JSON pointer and the problem.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "TourStep.h"

namespace tvtour {

struct Tour {
  std::string file;  // as given on the command line
  std::string name;  // file name without .json unless the file names it
  std::string about;
  nlohmann::json scenario;  // complete, settings included, checked
  double timeScale = 1;
  bool windowManager = false;
  bool focusAfterFirstFrame = false;  // else at map
  double startTimeout = 20;
  std::vector<Step> steps;
};

// Reads and checks the whole file; throws TourError.
Tour ReadTour(const std::string& path);

}  // namespace tvtour
