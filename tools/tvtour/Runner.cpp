#include "Runner.h"

#include <poll.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <functional>
#include <iomanip>
#include <map>
#include <memory>
#include <sstream>

#include "Checks.h"
#include "Control.h"
#include "Errors.h"
#include "Program.h"

namespace tvtour {

using nlohmann::json;

namespace {

const char* const kWindowName = "Antenna Selection Wnd";
const double kQuietMs = 300;         // no frame for this long: the screen is still
const double kSettleLimitMs = 5000;  // a screen that keeps moving is taken as it is
const double kTvPollMs = 50;         // the TV's state is read at most this often while waiting

std::string Seconds(double ms) {
  std::ostringstream out;
  out << std::fixed << std::setprecision(2) << ms / 1000.0 << " s";
  return out.str();
}

class Run {
 public:
  Run(Desk& desk, const Tour& tour, const std::string& folder, const RunnerOptions& options, std::ostream& progress)
      : m_desk(desk), m_tour(tour), m_folder(folder), m_options(options), m_progress(progress) {}

  RunResult Go();

 private:
  void Prepare();
  void Start();
  void DoStep(const Step& step, StepResult& result);
  // Pumps X, the program's files and its end until done() or the deadline.
  bool WaitUntil(const std::function<bool()>& done, double deadlineMs);
  void Refresh();
  json State();

  double Due(const At& at) const;
  bool Settle();
  void Key(const Step& step, StepResult& result);
  void Tvctl(const Step& step, StepResult& result);
  void Wait(const Step& step, StepResult& result);
  void Expect(const Step& step, StepResult& result);
  void Screenshot(const Step& step, StepResult& result);
  void Signal(const Step& step, StepResult& result);

  std::string LastFrame() const { return "the last frame " + LastFrameShowed(m_program.Frames()); }
  bool WindowShown() const { return m_program.Running() && m_desk.AppMapped(); }
  std::string Shot(const std::string& name);

  Desk& m_desk;
  const Tour& m_tour;
  std::string m_folder;
  const RunnerOptions& m_options;
  std::ostream& m_progress;
  std::unique_ptr<tvsim::Control> m_control;
  Program m_program;
  int m_notify = -1;
  std::map<std::string, double> m_marks;
  double m_launchMs = 0;
  int m_shots = 0;
  RunResult m_result;
};

void Run::Prepare() {
  mkdir(m_folder.c_str(), 0755);
  for (const char* name : {"tv.db", "tv.db-wal", "tv.db-shm", "tv.log", "probe", "app.output"}) {
    unlink((m_folder + "/" + name).c_str());
  }
  m_control = std::make_unique<tvsim::Control>(m_folder + "/tv.db");
  m_control->Load(m_tour.scenario, m_tour.file);
  m_result.before = m_control->Show();
  // Every file the program writes (database, log, frame probe) is in this folder.
  m_notify = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  if (m_notify >= 0) inotify_add_watch(m_notify, m_folder.c_str(), IN_MODIFY | IN_CREATE);
}

void Run::Refresh() {
  m_desk.Pump();
  m_program.Update();
}

bool Run::WaitUntil(const std::function<bool()>& done, double deadlineMs) {
  for (;;) {
    Refresh();
    if (done()) return true;
    const double now = NowMs();
    if (now >= deadlineMs) return false;
    pollfd fds[3] = {{m_desk.Fd(), POLLIN, 0}, {m_notify, POLLIN, 0}, {m_program.Fd(), POLLIN, 0}};
    // The timeout only bounds a wait on events; a deadline wakes it as well.
    poll(fds, 3, static_cast<int>(std::ceil(std::min(deadlineMs - now, 200.0))));
    if (fds[1].revents & POLLIN) {
      char buffer[4096];
      while (read(m_notify, buffer, sizeof buffer) > 0) {
      }
    }
  }
}

json Run::State() { return m_control->Show(); }

void Run::Start() {
  std::ostringstream env;
  env << m_tour.timeScale;
  m_desk.UseWindowManager(m_tour.windowManager);
  m_program.Start(m_options.app,
                  {{"TVSIM_DB", m_folder + "/tv.db"},
                   {"TVSIM_LOG", m_folder + "/tv.log"},
                   {"TVSIM_FRAME_PROBE", m_folder + "/probe"},
                   {"TVSIM_TIME_SCALE", env.str()},
                   {"DISPLAY", m_desk.DisplayName()}},
                  m_folder, m_folder + "/probe", m_folder + "/tv.log");
  m_launchMs = NowMs();
  m_marks["launch"] = m_launchMs;
  m_desk.Follow(m_program.Pid(), kWindowName);

  double mappedMs = -1;
  std::string focusError;
  bool focusGiven = false;
  const bool ok = WaitUntil(
      [&] {
        if (m_program.Ended()) return true;
        if (!m_desk.AppMapped()) return false;
        if (mappedMs < 0) mappedMs = NowMs();
        if (m_tour.focusAfterFirstFrame && m_program.Frames().empty()) return false;
        if (m_desk.WindowManagerRunning()) return m_desk.AppFocused();
        // No window manager: the runner gives the focus, once the window is
        // mapped (earlier X refuses it with BadMatch).
        focusGiven = m_desk.Focus(m_desk.AppWindow(), &focusError);
        return true;
      },
      m_launchMs + m_tour.startTimeout * 1000);
  std::ostringstream how;
  how << (m_desk.WindowManagerRunning() ? "window manager evilwm" : "no window manager") << ", window focused "
      << (m_desk.WindowManagerRunning() ? "by the window manager" : "by tvtour") << " "
      << (m_tour.focusAfterFirstFrame ? "after the first frame" : "when mapped");
  if (m_program.Ended()) {
    throw StepFailed("the program " + m_program.HowEnded() + " before its window was shown");
  }
  if (!ok) {
    throw StepFailed(std::string(m_desk.AppMapped()
                                     ? (m_desk.WindowManagerRunning() ? "the window manager did not focus the window"
                                                                      : "no frame was drawn")
                                     : "no window \"" + std::string(kWindowName) + "\" was shown") +
                     " within " + Seconds(m_tour.startTimeout * 1000) + " of the launch");
  }
  if (!m_desk.WindowManagerRunning() && !focusGiven) throw StepFailed(focusError);
  m_marks["start"] = NowMs();
  how << "; mapped " << Seconds(mappedMs - m_launchMs) << " after the launch";
  if (!m_program.Frames().empty()) how << ", first frame " << Seconds(m_program.Frames().front().ms - m_launchMs);
  how << ", focus " << Seconds(m_marks["start"] - m_launchMs);
  m_result.start = how.str();
}

double Run::Due(const At& at) const {
  return m_marks.at(at.since) + at.seconds * 1000 * (at.tvSeconds ? m_tour.timeScale : 1);
}

// Waits until the program drew at least one frame and then none for a while.
bool Run::Settle() {
  return WaitUntil(
      [&] {
        const auto& frames = m_program.Frames();
        if (!m_program.Running()) return true;
        return !frames.empty() && NowMs() - frames.back().ms >= kQuietMs;
      },
      NowMs() + kSettleLimitMs);
}

std::string Run::Shot(const std::string& name) {
  char file[256];
  std::snprintf(file, sizeof file, "%02d-%s.png", ++m_shots, name.c_str());
  std::string error;
  if (!m_desk.Screenshot(m_folder + "/" + file, &error)) throw StepFailed(error);
  return file;
}

void Run::Key(const Step& step, StepResult& result) {
  if (step.delay) {
    const double until = NowMs() + *step.delay * 1000;
    WaitUntil([] { return false; }, until);
  } else {
    Settle();
  }
  if (!m_program.Running()) throw StepFailed("the program " + m_program.HowEnded() + " before the key");
  m_desk.Key(KeysymOfKey(step.what));
  if (!step.mark.empty()) m_marks[step.mark] = NowMs();
  result.message = "sent";
}

void Run::Tvctl(const Step& step, StepResult& result) {
  const json& a = step.args;
  try {
    if (step.what == "set") {
      const json& value = a.at("value");
      m_control->Set(a.at("key").get<std::string>(), value.is_string() ? value.get<std::string>() : value.dump());
    } else if (step.what == "tune") {
      m_control->Tune(a.at("antenna").get<int>(), a.at("service").get<int>(), a.value("screen", 0));
    } else if (step.what == "recording") {
      if (a.contains("start")) {
        m_control->StartRecording(a.at("start").get<uint64_t>());
      } else {
        m_control->StopRecording(a.at("stop").get<uint64_t>());
      }
    } else if (step.what == "playback") {
      m_control->SetPlaying(a.at("playing").get<int64_t>());
    } else if (step.what == "recorder-event") {
      auto word = [](const json& v) { return static_cast<int32_t>(static_cast<uint32_t>(v.get<int64_t>())); };
      std::vector<int32_t> words;
      if (a.contains("words")) {
        for (const json& w : a.at("words")) words.push_back(word(w));
      }
      m_control->SendRecorderEvent(word(a.at("event")), word(a.at("result")), words);
    } else if (step.what == "fault") {
      if (a.contains("add")) {
        result.message = "fault " + std::to_string(m_control->AddFault(a.at("add")));
      } else if (a.at("clear").is_string()) {
        m_control->ClearFaults();
      } else {
        m_control->ClearFault(a.at("clear").get<int64_t>());
      }
    }
  } catch (const tvsim::UsageError& e) {
    throw StepFailed(std::string("tvctl refused: ") + e.what());
  } catch (const tvsim::ScenarioError& e) {
    throw StepFailed(std::string("tvctl refused: ") + e.what());
  }
  if (!step.mark.empty()) m_marks[step.mark] = NowMs();
  if (result.message.empty()) result.message = "done";
}

void Run::Wait(const Step& step, StepResult& result) {
  const json& a = step.args;
  const double started = NowMs();
  const double deadline = started + step.timeout * 1000;
  const std::string within = " within " + Seconds(step.timeout * 1000);
  double mark = -1;
  if (step.what == "window") {
    const bool shown = a.at("shown").get<bool>();
    if (!WaitUntil([&] { return WindowShown() == shown; }, deadline)) {
      throw StepFailed(std::string("the window was ") + (shown ? "not shown" : "still shown") + within);
    }
  } else if (step.what == "frame") {
    const size_t before = m_program.Frames().size();
    auto fits = [&](const Frame& f) { return FrameFits(f, a); };
    const bool any = !a.contains("text") && !a.contains("row");
    const bool ok = WaitUntil(
        [&] {
          const auto& frames = m_program.Frames();
          if (any) return frames.size() > before;
          return !frames.empty() && fits(frames.back());
        },
        deadline);
    if (!ok) {
      throw StepFailed(std::string(any ? "no frame was drawn" : "no frame showed that") + within + "; " + LastFrame() +
                       (m_program.Ended() ? "; the program " + m_program.HowEnded() : ""));
    }
    // The moment it started to show: the first of the matching frames in a row.
    const auto& frames = m_program.Frames();
    size_t first = frames.size() - 1;
    if (!any) {
      while (first > 0 && fits(frames[first - 1])) --first;
    }
    mark = frames[first].ms;
    result.message = LastFrameShowed(frames);
  } else if (step.what == "settled") {
    if (!WaitUntil(
            [&] {
              const auto& frames = m_program.Frames();
              return !frames.empty() && NowMs() - frames.back().ms >= kQuietMs;
            },
            deadline)) {
      throw StepFailed("the screen did not stay still for " + Seconds(kQuietMs) + within);
    }
  } else if (step.what == "log") {
    const int wanted = a.value("count", 1);
    if (!WaitUntil([&] { return CountLogLines(a, m_program.Log()) >= wanted; }, deadline)) {
      throw StepFailed(std::to_string(CountLogLines(a, m_program.Log())) + " log line(s) matched, not " +
                       std::to_string(wanted) + within);
    }
  } else if (step.what == "tv") {
    const json::json_pointer pointer(a.at("pointer").get<std::string>());
    json seen;
    double lastRead = -1e9;
    const bool ok = WaitUntil(
        [&] {
          if (NowMs() - lastRead < kTvPollMs) return false;
          lastRead = NowMs();
          const json state = State();
          seen = state.contains(pointer) ? state.at(pointer) : json();
          return state.contains(pointer) && seen == a.at("equals");
        },
        deadline);
    if (!ok) {
      throw StepFailed(a.at("pointer").get<std::string>() + " is " + (seen.is_null() ? "absent" : Compact(seen)) +
                       ", not " + Compact(a.at("equals")) + within);
    }
  } else if (step.what == "exit") {
    if (!WaitUntil([&] { return m_program.Ended(); }, deadline)) {
      throw StepFailed("the program still ran" + within + (m_desk.AppMapped() ? "; " + LastFrame() : ""));
    }
    mark = m_program.EndedMs();
    if (a.contains("status") && m_program.ExitStatus() != a.at("status").get<int>()) {
      throw StepFailed("the program " + m_program.HowEnded() + ", not with status " + Compact(a.at("status")));
    }
    result.message = m_program.HowEnded();
  }
  if (!step.mark.empty()) m_marks[step.mark] = mark >= 0 ? mark : NowMs();
  if (result.message.empty()) result.message = "after " + Seconds(NowMs() - started);
}

void Run::Expect(const Step& step, StepResult& result) {
  const json& a = step.args;
  Refresh();
  if (IsStateCheck(step.what)) {
    result.message = CheckState(step.what, a, State());
  } else if (step.what == "log") {
    result.message = CheckLog(a, m_program.Log());
  } else if (step.what == "focused") {
    result.message = CheckFocused(a, m_program.Frames());
  } else if (step.what == "exit") {
    if (!m_program.Ended()) throw StepFailed("the program is still running");
    if (a.contains("status") && m_program.ExitStatus() != a.at("status").get<int>()) {
      throw StepFailed("the program " + m_program.HowEnded());
    }
    result.message = m_program.HowEnded();
  } else if (step.what == "running") {
    if (!m_program.Running()) throw StepFailed("the program " + m_program.HowEnded());
    result.message = "running";
  } else if (step.what == "window") {
    const bool shown = a.at("shown").get<bool>();
    if (WindowShown() != shown) {
      throw StepFailed(std::string("the window is ") + (WindowShown() ? "shown" : "not shown") +
                       (m_program.Ended() ? " (the program " + m_program.HowEnded() + ")" : ""));
    }
    result.message = shown ? "shown" : "gone";
    if (shown && a.value("on_screen", false)) {
      std::string where;
      if (!m_desk.AppOnScreen(&where)) throw StepFailed("the window is not wholly on the screen: " + where);
      result.message += ", " + where;
    }
  }
  if (!step.mark.empty()) m_marks[step.mark] = NowMs();
}

void Run::Screenshot(const Step& step, StepResult& result) {
  if (step.args.value("settle", true)) Settle();
  result.screenshot = Shot(step.what);
  result.message = result.screenshot;
  if (!step.mark.empty()) m_marks[step.mark] = NowMs();
}

void Run::Signal(const Step& step, StepResult& result) {
  static const std::map<std::string, int> numbers = {
      {"TERM", SIGTERM}, {"INT", SIGINT}, {"HUP", SIGHUP}, {"KILL", SIGKILL}};
  Refresh();
  if (!m_program.Running()) throw StepFailed("the program " + m_program.HowEnded() + " already");
  m_program.Signal(numbers.at(step.what));
  if (!step.mark.empty()) m_marks[step.mark] = NowMs();
  result.message = "sent";
}

void Run::DoStep(const Step& step, StepResult& result) {
  if (step.at) {
    const double due = Due(*step.at);
    const double now = NowMs();
    if (now > due) {
      throw StepFailed("due " + Seconds(due - m_marks.at(step.at->since)) + " after \"" + step.at->since +
                       "\", but the tour got there only after " + Seconds(now - m_marks.at(step.at->since)));
    }
    WaitUntil([] { return false; }, due);
  }
  switch (step.kind) {
    case Step::Kind::kKey:
      Key(step, result);
      break;
    case Step::Kind::kTvctl:
      Tvctl(step, result);
      break;
    case Step::Kind::kWait:
      Wait(step, result);
      break;
    case Step::Kind::kExpect:
      Expect(step, result);
      break;
    case Step::Kind::kScreenshot:
      Screenshot(step, result);
      break;
    case Step::Kind::kSignal:
      Signal(step, result);
      break;
  }
}

RunResult Run::Go() {
  const double began = NowMs();
  m_launchMs = began;  // until the launch
  m_result.folder = m_folder;
  for (const Step& step : m_tour.steps) {
    StepResult r;
    r.label = step.label;
    r.note = step.note;
    m_result.steps.push_back(r);
  }
  size_t index = 0;
  const size_t count = m_tour.steps.size();
  auto print = [&](const std::string& number, const std::string& verdict, const std::string& label,
                   const std::string& message) {
    if (!m_options.verbose) return;
    std::ostringstream line;
    line << "  " << std::setw(5) << number << " " << std::setw(8) << Seconds(NowMs() - m_launchMs) << "  " << std::left
         << std::setw(7) << verdict << std::right << label;
    if (!message.empty()) line << "  (" << message << ")";
    m_progress << line.str() << std::endl;
  };
  try {
    Prepare();
    try {
      Start();
      print("start", "ok", "launched", m_result.start);
    } catch (const std::exception& e) {
      m_result.start = e.what();
      throw StepFailed(std::string("start: ") + e.what());
    }
    for (; index < count; ++index) {
      StepResult& r = m_result.steps[index];
      const std::string number = std::to_string(index + 1) + "/" + std::to_string(count);
      try {
        DoStep(m_tour.steps[index], r);
        r.verdict = StepResult::Verdict::kPassed;
      } catch (const StepFailed& e) {
        r.verdict = StepResult::Verdict::kFailed;
        r.message = e.what();
      }
      r.atSeconds = (NowMs() - m_launchMs) / 1000;
      print(number, r.verdict == StepResult::Verdict::kPassed ? "ok" : "FAILED", r.label, r.message);
      if (r.verdict == StepResult::Verdict::kFailed) {
        m_result.failure = "step " + std::to_string(index + 1) + " (" + m_tour.steps[index].pointer + ") " + r.label +
                           ": " + r.message;
        break;
      }
    }
  } catch (const std::exception& e) {
    // Nothing of the steps ran: the TV or the program could not be set up.
    m_result.failure = e.what();
    if (m_options.verbose) m_progress << "  FAILED " << e.what() << std::endl;
  }
  if (!m_result.failure.empty() && m_program.Pid() > 0) {
    try {
      m_result.failureShot = Shot("failed");
    } catch (const std::exception&) {
    }
  }
  Refresh();
  m_result.ended = m_program.Running() ? "still running at the end of the tour: ended by tvtour" : m_program.HowEnded();
  m_program.Stop();
  if (m_control) m_result.after = State();
  if (m_notify >= 0) close(m_notify);
  m_result.passed = m_result.failure.empty();
  m_result.seconds = (NowMs() - began) / 1000;
  return m_result;
}

}  // namespace

RunResult RunTour(Desk& desk, const Tour& tour, const std::string& folder, const RunnerOptions& options,
                  std::ostream& progress) {
  return Run(desk, tour, folder, options, progress).Go();
}

}  // namespace tvtour
