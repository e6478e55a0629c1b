// The report folder: a Markdown page per tour (steps, verdicts, screenshots,
// the TV before and after, the log) and JUnit XML over all tours for CI.
#pragma once

#include <string>
#include <vector>

#include "Runner.h"
#include "TourFile.h"

namespace tvtour {

struct TourOutcome {
  const Tour* tour = nullptr;
  std::string folder;  // <out>/<tour name>
  std::vector<RunResult> runs;
  int Passed() const;
};

// Writes <folder>/report.md and each run's state-before.json and state-after.json;
// returns the page's path.
std::string WriteTourPage(const TourOutcome& outcome);
// Writes <out>/junit.xml and <out>/index.md; returns the XML's path.
std::string WriteSummary(const std::string& out, const std::vector<TourOutcome>& outcomes);

}  // namespace tvtour
