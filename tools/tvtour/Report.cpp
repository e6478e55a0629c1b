#include "Report.h"

#include <fstream>
#include <iomanip>
#include <sstream>

namespace tvtour {

using nlohmann::json;

namespace {

std::string Relative(const std::string& base, const std::string& path) {
  if (path.compare(0, base.size() + 1, base + "/") == 0) return path.substr(base.size() + 1);
  return path;
}

std::string Cell(const std::string& text) {
  std::string cell;
  for (char c : text) {
    if (c == '|') {
      cell += "\\|";
    } else if (c == '\n') {
      cell += ' ';
    } else {
      cell += c;
    }
  }
  return cell;
}

std::string Compact(const json& value) {
  return value.is_null() ? "-" : value.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string Xml(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        // XML 1.0 has no place for other control characters.
        if (static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t') {
          out += ' ';
        } else {
          out += c;
        }
    }
  }
  return out;
}

std::string Fixed(double seconds) {
  std::ostringstream out;
  out << std::fixed << std::setprecision(2) << seconds;
  return out.str();
}

std::string Verdict(StepResult::Verdict verdict) {
  switch (verdict) {
    case StepResult::Verdict::kPassed:
      return "ok";
    case StepResult::Verdict::kFailed:
      return "**FAILED**";
    case StepResult::Verdict::kNotRun:
      return "not run";
  }
  return "";
}

json Member(const json& state, const char* name) {
  return state.is_object() && state.contains(name) ? state.at(name) : json();
}

// The records, one per line, without the columns every record has.
void Records(std::ostream& page, const json& state, const char* name) {
  const json records = Member(state, name);
  page << "- " << name << ": ";
  if (!records.is_array() || records.empty()) {
    page << "none\n";
    return;
  }
  page << "\n";
  for (json record : records) {
    for (const char* noise : {"seq", "pid"}) record.erase(noise);
    page << "  - `" << Compact(record) << "`\n";
  }
}

void RunDetails(std::ostream& page, const TourOutcome& outcome, const RunResult& run) {
  const std::string base = Relative(outcome.folder, run.folder);
  const std::string prefix = base == run.folder ? "" : base + "/";
  page << "Start: " << run.start << ".  \n";
  page << "The program: " << run.ended << ".  \n";
  page << "Files: [tv.log](" << prefix << "tv.log), [state before](" << prefix << "state-before.json), [state after]("
       << prefix << "state-after.json), [frames](" << prefix << "probe), [program output](" << prefix
       << "app.output)\n\n";
  page << "| # | step | verdict | at (s) | seen |\n|---|---|---|---|---|\n";
  for (size_t i = 0; i < run.steps.size(); ++i) {
    const StepResult& step = run.steps[i];
    page << "| " << i + 1 << " | " << Cell(step.label) << (step.note.empty() ? "" : "<br>*" + Cell(step.note) + "*")
         << " | " << Verdict(step.verdict) << " | "
         << (step.verdict == StepResult::Verdict::kNotRun ? "" : Fixed(step.atSeconds)) << " | " << Cell(step.message)
         << " |\n";
  }
  page << "\n";
  for (const StepResult& step : run.steps) {
    if (!step.screenshot.empty())
      page << "**" << step.label << "**\n\n![" << step.screenshot << "](" << prefix << step.screenshot << ")\n\n";
  }
  if (!run.failureShot.empty()) {
    page << "**The screen when the tour failed**\n\n![failed](" << prefix << run.failureShot << ")\n\n";
  }
  page << "### The TV before and after\n\n| | before | after |\n|---|---|---|\n";
  for (const char* name : {"tv_mode", "recordings", "playback"}) {
    page << "| " << name << " | `" << Compact(Member(run.before, name)) << "` | `" << Compact(Member(run.after, name))
         << "` |\n";
  }
  page << "\nWhat the TV recorded during the run:\n\n";
  for (const char* name : {"tuning_changes", "kpi_events", "recorder_requests", "settings_writes", "recorder_events"}) {
    Records(page, run.after, name);
  }
  page << "\n### Log lines\n\n```\n";
  std::ifstream log(run.folder + "/tv.log");
  std::string line;
  while (std::getline(log, line)) page << line << "\n";
  page << "```\n";
}

}  // namespace

int TourOutcome::Passed() const {
  int passed = 0;
  for (const RunResult& run : runs) passed += run.passed ? 1 : 0;
  return passed;
}

std::string WriteTourPage(const TourOutcome& outcome) {
  for (const RunResult& run : outcome.runs) {
    std::ofstream(run.folder + "/state-before.json")
        << run.before.dump(2, ' ', false, json::error_handler_t::replace) << "\n";
    std::ofstream(run.folder + "/state-after.json")
        << run.after.dump(2, ' ', false, json::error_handler_t::replace) << "\n";
  }
  const Tour& tour = *outcome.tour;
  const int passed = outcome.Passed();
  const int total = static_cast<int>(outcome.runs.size());
  std::ostringstream page;
  page << "# Tour " << tour.name << ": " << (passed == total ? "passed" : "FAILED") << " (" << passed << " of " << total
       << (total == 1 ? " run" : " runs") << " passed)\n\n";
  if (!tour.about.empty()) page << tour.about << "\n\n";
  page << "File: `" << tour.file << "`; time scale " << tour.timeScale << "; "
       << (tour.windowManager ? "window manager evilwm" : "no window manager") << ", focus "
       << (tour.focusAfterFirstFrame ? "after the first frame" : "when mapped") << ".\n\n";
  if (total > 1) {
    page << "| run | verdict | seconds | why it failed |\n|---|---|---|---|\n";
    for (int i = 0; i < total; ++i) {
      const RunResult& run = outcome.runs[static_cast<size_t>(i)];
      page << "| " << i + 1 << " | " << (run.passed ? "passed" : "**FAILED**") << " | " << Fixed(run.seconds) << " | "
           << Cell(run.failure) << " |\n";
    }
    page << "\n";
  }
  // One run in full: the first that failed, else the last.
  size_t shown = outcome.runs.size() - 1;
  for (size_t i = 0; i < outcome.runs.size(); ++i) {
    if (!outcome.runs[i].passed) {
      shown = i;
      break;
    }
  }
  if (!outcome.runs.empty()) {
    const RunResult& run = outcome.runs[shown];
    page << "## " << (total > 1 ? "Run " + std::to_string(shown + 1) + ", " : std::string())
         << (run.passed ? "passed" : "failed") << "\n\n";
    if (!run.passed) page << "**" << Cell(run.failure) << "**\n\n";
    RunDetails(page, outcome, run);
  }
  const std::string path = outcome.folder + "/report.md";
  std::ofstream(path) << page.str();
  return path;
}

std::string WriteSummary(const std::string& out, const std::vector<TourOutcome>& outcomes) {
  int tests = 0, failures = 0;
  double seconds = 0;
  for (const TourOutcome& outcome : outcomes) {
    tests += static_cast<int>(outcome.runs.size());
    failures += static_cast<int>(outcome.runs.size()) - outcome.Passed();
    for (const RunResult& run : outcome.runs) seconds += run.seconds;
  }
  std::ostringstream xml;
  xml << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"tvtour\" tests=\"" << tests << "\" failures=\""
      << failures << "\" time=\"" << Fixed(seconds) << "\">\n";
  for (const TourOutcome& outcome : outcomes) {
    double tourSeconds = 0;
    for (const RunResult& run : outcome.runs) tourSeconds += run.seconds;
    xml << "  <testsuite name=\"" << Xml(outcome.tour->name) << "\" file=\"" << Xml(outcome.tour->file) << "\" tests=\""
        << outcome.runs.size() << "\" failures=\"" << outcome.runs.size() - static_cast<size_t>(outcome.Passed())
        << "\" time=\"" << Fixed(tourSeconds) << "\">\n";
    for (size_t i = 0; i < outcome.runs.size(); ++i) {
      const RunResult& run = outcome.runs[i];
      xml << "    <testcase classname=\"tours." << Xml(outcome.tour->name) << "\" name=\"run " << i + 1 << "\" time=\""
          << Fixed(run.seconds) << "\"";
      if (run.passed) {
        xml << "/>\n";
        continue;
      }
      xml << ">\n      <failure message=\"" << Xml(run.failure) << "\">";
      for (size_t s = 0; s < run.steps.size(); ++s) {
        const StepResult& step = run.steps[s];
        if (step.verdict == StepResult::Verdict::kNotRun) continue;
        xml << Xml(std::to_string(s + 1) + " " + step.label + ": " +
                   (step.verdict == StepResult::Verdict::kPassed ? "ok" : "FAILED") + " " + step.message)
            << "\n";
      }
      xml << "Report: " << Xml(outcome.folder + "/report.md") << "</failure>\n    </testcase>\n";
    }
    xml << "  </testsuite>\n";
  }
  xml << "</testsuites>\n";
  const std::string path = out + "/junit.xml";
  std::ofstream(path) << xml.str();

  std::ostringstream index;
  index << "# Tours\n\n| tour | passed | report |\n|---|---|---|\n";
  for (const TourOutcome& outcome : outcomes) {
    index << "| " << outcome.tour->name << " | " << outcome.Passed() << " of " << outcome.runs.size() << " | ["
          << Relative(out, outcome.folder) << "/report.md](" << Relative(out, outcome.folder) << "/report.md) |\n";
  }
  std::ofstream(out + "/index.md") << index.str();
  return path;
}

}  // namespace tvtour
