// tvtour: runs tour files against the antenna popup on the simulated TV and
// writes a report folder (docs/tours.md).
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Desk.h"
#include "Report.h"
#include "Runner.h"
#include "TourFile.h"

namespace {

constexpr int kAllPassed = 0;
constexpr int kFailed = 1;
constexpr int kRefused = 2;

const char* const kUsage =
    "usage: tvtour [OPTIONS] TOUR.json...\n"
    "Runs each tour against the antenna popup on a fresh simulated TV and writes a report folder:\n"
    "a Markdown page per tour (steps, verdicts, screenshots, the TV before and after, the log) and\n"
    "junit.xml. Every file is checked before anything runs. Without a display (or with --xvfb) the\n"
    "tours run on an own Xvfb, with or without a window manager as each tour asks.\n"
    "\n"
    "  --out DIR    the report folder (default out/tours-DATE-TIME)\n"
    "  --repeat N   runs each tour N times and counts the passes (default 1)\n"
    "  --app PATH   the program to tour (default: antenna-selection beside tvtour or in the build tree)\n"
    "  --xvfb       an own Xvfb even when DISPLAY names a display\n"
    "  --check      only checks the tour files\n"
    "  --quiet      one line per run instead of one per step\n"
    "\n"
    "Exit status: 0 every run of every tour passed, 1 a run failed or could not start,\n"
    "2 a tour file was refused (nothing ran) or bad usage.\n";

int BadUsage(const std::string& message) {
  std::cerr << "tvtour: " << message << "\n" << kUsage;
  return kRefused;
}

std::string OwnFolder() {
  char path[PATH_MAX];
  const ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
  if (n <= 0) return ".";
  path[n] = '\0';
  std::string exe(path);
  return exe.substr(0, exe.rfind('/'));
}

// Installed, the program is beside tvtour; in the build tree, one folder up.
std::string DefaultApp() {
  const std::string folder = OwnFolder();
  for (const std::string& candidate : {folder + "/antenna-selection", folder + "/../antenna-selection"}) {
    if (access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return folder + "/antenna-selection";
}

bool MakeFolders(const std::string& path) {
  std::string built;
  std::size_t start = 0;
  while (start <= path.size()) {
    const std::size_t slash = path.find('/', start);
    built = path.substr(0, slash == std::string::npos ? path.size() : slash);
    if (!built.empty() && mkdir(built.c_str(), 0755) != 0 && errno != EEXIST) return false;
    if (slash == std::string::npos) break;
    start = slash + 1;
  }
  return true;
}

std::string DefaultOut() {
  char stamp[32];
  const std::time_t now = std::time(nullptr);
  std::strftime(stamp, sizeof stamp, "%Y%m%d-%H%M%S", std::localtime(&now));
  return std::string("out/tours-") + stamp;
}

}  // namespace

int main(int argc, char** argv) {
  std::string out, app;
  int repeat = 1;
  bool ownDisplay = false, checkOnly = false, quiet = false;
  std::vector<std::string> files;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    auto value = [&]() -> std::string {
      if (i + 1 >= argc) throw std::invalid_argument(arg + " needs a value");
      return argv[++i];
    };
    try {
      if (arg == "-h" || arg == "--help") {
        std::cout << kUsage;
        return kAllPassed;
      } else if (arg == "--out") {
        out = value();
      } else if (arg == "--app") {
        app = value();
      } else if (arg == "--repeat") {
        const std::string text = value();
        char* end = nullptr;
        const long n = std::strtol(text.c_str(), &end, 10);
        if (text.empty() || *end != '\0' || n < 1 || n > 10000)
          return BadUsage("--repeat needs a count from 1 to 10000");
        repeat = static_cast<int>(n);
      } else if (arg == "--xvfb") {
        ownDisplay = true;
      } else if (arg == "--check") {
        checkOnly = true;
      } else if (arg == "--quiet") {
        quiet = true;
      } else if (!arg.empty() && arg[0] == '-') {
        return BadUsage("unknown option " + arg);
      } else {
        files.push_back(arg);
      }
    } catch (const std::invalid_argument& e) {
      return BadUsage(e.what());
    }
  }
  if (files.empty()) return BadUsage("no tour file given");

  // Every file is read and checked before anything runs.
  std::vector<tvtour::Tour> tours;
  std::map<std::string, std::string> names;
  for (const std::string& file : files) {
    try {
      tours.push_back(tvtour::ReadTour(file));
    } catch (const tvtour::TourError& e) {
      std::cerr << "tvtour: refused: " << e.what() << "\n";
      return kRefused;
    }
    const auto [it, fresh] = names.emplace(tours.back().name, file);
    if (!fresh) {
      std::cerr << "tvtour: refused: " << file << ": /name: the tour name \"" << it->first << "\" is also that of "
                << it->second << " (each tour gets its own report folder)\n";
      return kRefused;
    }
  }
  if (checkOnly) {
    for (const tvtour::Tour& tour : tours)
      std::cout << "tvtour: " << tour.file << ": ok, " << tour.steps.size() << " steps\n";
    return kAllPassed;
  }

  if (out.empty()) out = DefaultOut();
  if (app.empty()) app = DefaultApp();
  if (!MakeFolders(out)) {
    std::cerr << "tvtour: cannot make the report folder " << out << ": " << strerror(errno) << "\n";
    return kFailed;
  }
  std::unique_ptr<tvtour::Desk> desk;
  try {
    desk = std::make_unique<tvtour::Desk>(ownDisplay);
  } catch (const std::exception& e) {
    std::cerr << "tvtour: " << e.what() << "\n";
    return kFailed;
  }
  std::cout << "tvtour: " << tours.size() << (tours.size() == 1 ? " tour" : " tours") << " on display "
            << desk->DisplayName() << (desk->OwnDisplay() ? " (own Xvfb)" : "") << ", program " << app
            << ", reports in " << out << std::endl;

  tvtour::RunnerOptions options;
  options.app = app;
  options.verbose = !quiet;
  std::vector<tvtour::TourOutcome> outcomes;
  for (const tvtour::Tour& tour : tours) {
    tvtour::TourOutcome outcome;
    outcome.tour = &tour;
    outcome.folder = out + "/" + tour.name;
    mkdir(outcome.folder.c_str(), 0755);
    for (int run = 1; run <= repeat; ++run) {
      char name[32];
      std::snprintf(name, sizeof name, "/run-%02d", run);
      const std::string folder = repeat == 1 ? outcome.folder : outcome.folder + name;
      if (!quiet || repeat == 1) {
        std::cout << "tour " << tour.name << " (" << tour.file << ")";
        if (repeat > 1) std::cout << ", run " << run << " of " << repeat;
        std::cout << std::endl;
      }
      outcome.runs.push_back(tvtour::RunTour(*desk, tour, folder, options, std::cout));
      const tvtour::RunResult& result = outcome.runs.back();
      if (quiet) {
        std::cout << "tour " << tour.name << " run " << run << "/" << repeat << ": "
                  << (result.passed ? "passed" : "FAILED: " + result.failure) << std::endl;
      }
    }
    const std::string page = tvtour::WriteTourPage(outcome);
    std::cout << "tour " << tour.name << ": " << (outcome.Passed() == repeat ? "passed" : "FAILED") << ", "
              << outcome.Passed() << " of " << repeat << (repeat == 1 ? " run" : " runs") << " passed; report " << page
              << std::endl;
    outcomes.push_back(std::move(outcome));
  }
  const std::string xml = tvtour::WriteSummary(out, outcomes);
  int failedTours = 0;
  for (const tvtour::TourOutcome& outcome : outcomes) failedTours += outcome.Passed() == repeat ? 0 : 1;
  std::cout << "tvtour: " << outcomes.size() - static_cast<size_t>(failedTours) << " of " << outcomes.size()
            << (outcomes.size() == 1 ? " tour" : " tours") << " passed; " << out << "/index.md, " << xml << std::endl;
  return failedTours == 0 ? kAllPassed : kFailed;
}
