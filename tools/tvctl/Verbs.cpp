#include "Verbs.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>
#include <ostream>

#include "Control.h"
#include "Errors.h"

namespace tvctl {

using nlohmann::json;

namespace {

const std::map<std::string, std::string>& Helps() {
  static const std::map<std::string, std::string> helps = {
      {"load",
       "usage: tvctl load FILE\n"
       "Replaces the whole TV (state, faults and records) with the scenario FILE.\n"
       "A refused scenario changes nothing; the message names the file, the JSON pointer and the problem.\n"},
      {"show",
       "usage: tvctl show [--scenario] [MEMBER...]\n"
       "Prints the TV's state and everything recorded as JSON. MEMBERs pick top-level members\n"
       "(e.g. tv_mode calls); --scenario prints only the state, as a scenario that load takes back.\n"},
      {"set",
       "usage: tvctl set KEY VALUE\n"
       "Sets a setting, system information or system setting; VALUE is read as the key's type:\n"
       "a 32-bit decimal integer, true or false, or UTF-8 text. Running applications are notified.\n"},
      {"reset", "usage: tvctl reset\nEmpties the TV: no services, no settings, no faults, no records.\n"},
      {"tune",
       "usage: tvctl tune ANTENNA SERVICE [--screen N]\n"
       "Tunes screen N (0..15, default 0, the main screen) to the mode ANTENNA/SERVICE (antenna -1..2,\n"
       "service mode -1..255; -1 -1 is no mode). Not recorded as the application's tuning change.\n"},
      {"fault",
       "usage: tvctl fault add OP (--result N [--keep-outputs] | --null | --no-table | --no-attribute ID)\n"
       "                          [--nth N] [--target T]\n"
       "       tvctl fault list\n"
       "       tvctl fault clear [ID]\n"
       "Adds, lists or clears injected faults. --nth N hits only the N-th matching call; --target T only\n"
       "calls for that target (screen, mode \"antenna/service\", service id, settings key, profile id).\n"},
      {"recording",
       "usage: tvctl recording start|stop SERVICE_ID\nStarts or stops a recording on a service.\n"},
      {"playback", "usage: tvctl playback 0|1\nSets the multimedia playback state (1 playing, 0 not).\n"},
      {"recorder-event",
       "usage: tvctl recorder-event EVENT RESULT [WORD...]\n"
       "Sends a recorder event to the running applications' recorder callbacks: EVENT and RESULT are the\n"
       "first two words, up to five 32-bit WORDs (-2147483648..4294967295) follow; missing words are 0.\n"
       "Each application gets it once, on its main loop, if it registered its callback before. Event 1\n"
       "with result 1 reports a stopped recording. Changes nothing else on the TV.\n"},
  };
  return helps;
}

// A decimal integer as people type it: an optional minus and digits, nothing
// else (no spaces, plus signs or hex). Read at full width, so that a number too
// big for what it stands for is refused rather than cut down to something else.
int64_t Number(const std::string& verb, const std::string& text, const std::string& what) {
  int64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error == std::errc::result_out_of_range) throw Usage(verb, what + " \"" + text + "\" is out of range");
  if (text.empty() || error != std::errc() || stop != end) {
    throw Usage(verb, what + " \"" + text + "\" is not a number");
  }
  return value;
}

int64_t Number(const std::string& verb, const std::string& text, const std::string& what, int64_t min, int64_t max) {
  const int64_t value = Number(verb, text, what);
  if (value < min || value > max) {
    throw Usage(verb, what + " " + text + " is out of range " + std::to_string(min) + ".." + std::to_string(max));
  }
  return value;
}

uint64_t ServiceId(const std::string& verb, const std::string& text) {
  uint64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error == std::errc::result_out_of_range) throw Usage(verb, "service id \"" + text + "\" is past 2^64-1");
  if (text.empty() || error != std::errc() || stop != end) {
    throw Usage(verb, "service id \"" + text + "\" is not a number");
  }
  return value;
}

// A 32-bit word given signed or as its unsigned bits (e.g. half of a service id).
int32_t Word(const std::string& verb, const std::string& text, const std::string& what) {
  const int64_t value = Number(verb, text, what);
  if (value < INT32_MIN || value > static_cast<int64_t>(UINT32_MAX)) {
    throw Usage(verb, what + " \"" + text + "\" is not a 32-bit word");
  }
  return static_cast<int32_t>(static_cast<uint32_t>(value));
}

void Expect(const std::string& verb, const std::vector<std::string>& args, size_t min, size_t max) {
  if (args.size() < min) throw Usage(verb, "missing arguments");
  if (args.size() > max) throw Usage(verb, "too many arguments");
}

void Show(const std::vector<std::string>& args, tvsim::Control& control, std::ostream& out) {
  bool asScenario = false;
  std::vector<std::string> members;
  for (const std::string& arg : args) {
    if (arg == "--scenario") {
      asScenario = true;
    } else if (!arg.empty() && arg[0] == '-') {
      throw Usage("show", "unknown option " + arg);
    } else {
      members.push_back(arg);
    }
  }
  json state = control.Show(asScenario);
  if (!members.empty()) {
    json picked = json::object();
    for (const std::string& member : members) {
      if (!state.contains(member)) throw Usage("show", "no member \"" + member + "\"");
      picked[member] = state[member];
    }
    state = picked;
  }
  out << state.dump(2, ' ', false, json::error_handler_t::replace) << "\n";
}

void Tune(const std::vector<std::string>& args, tvsim::Control& control) {
  std::vector<std::string> positional;
  int64_t screen = 0;
  bool screenGiven = false;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--screen") {
      if (i + 1 >= args.size()) throw Usage("tune", "--screen needs a number");
      if (screenGiven) throw Usage("tune", "--screen given twice");
      screen = Number("tune", args[++i], "screen");
      screenGiven = true;
    } else {
      positional.push_back(args[i]);
    }
  }
  Expect("tune", positional, 2, 2);
  // Control checks the ranges, at full width.
  control.Tune(Number("tune", positional[0], "antenna"), Number("tune", positional[1], "service mode"), screen);
}

void Fault(const std::vector<std::string>& args, tvsim::Control& control, std::ostream& out) {
  if (args.empty()) throw Usage("fault", "missing action: add, list or clear");
  const std::string& action = args[0];
  if (action == "list") {
    Expect("fault", args, 1, 1);
    out << control.ListFaults().dump(2, ' ', false, json::error_handler_t::replace) << "\n";
  } else if (action == "clear") {
    Expect("fault", args, 1, 2);
    if (args.size() == 2) {
      control.ClearFault(Number("fault", args[1], "fault id", 1, INT64_MAX));
    } else {
      control.ClearFaults();
    }
  } else if (action == "add") {
    if (args.size() < 2) throw Usage("fault", "missing operation");
    json fault = {{"op", args[1]}};
    std::vector<std::string> given;
    for (size_t i = 2; i < args.size(); ++i) {
      const std::string& flag = args[i];
      // An option given twice is a typo either way: which of the two was meant?
      if (std::find(given.begin(), given.end(), flag) != given.end()) throw Usage("fault", flag + " given twice");
      given.push_back(flag);
      auto value = [&]() -> const std::string& {
        if (i + 1 >= args.size()) throw Usage("fault", flag + " needs a value");
        return args[++i];
      };
      if (flag == "--result") {
        fault["result"] = Number("fault", value(), "result");
      } else if (flag == "--keep-outputs") {
        fault["keep_outputs"] = true;
      } else if (flag == "--null") {
        fault["null"] = true;
      } else if (flag == "--no-table") {
        fault["no_table"] = true;
      } else if (flag == "--no-attribute") {
        fault["no_attribute"] = Number("fault", value(), "attribute id");
      } else if (flag == "--nth") {
        fault["nth"] = Number("fault", value(), "nth");
      } else if (flag == "--target") {
        fault["target"] = value();
      } else {
        throw Usage("fault", "unknown option " + flag);
      }
    }
    out << control.AddFault(fault) << "\n";
  } else {
    throw Usage("fault", "unknown action \"" + action + "\"");
  }
}

}  // namespace

std::string HelpText(const std::string& verb) {
  if (verb.empty()) {
    std::string text =
        "usage: tvctl [--db PATH] VERB [ARGS...]\n"
        "Drives the simulated TV. The database is PATH, else $TVSIM_DB, else\n"
        "$XDG_STATE_HOME/tvsim/tv.db (~/.local/state/tvsim/tv.db).\n"
        "Exit status: 0 done, 1 runtime failure (database unusable), 2 bad usage or refused input.\n\nVerbs:\n";
    for (const auto& entry : Helps()) text += "  " + entry.second.substr(7, entry.second.find('\n') - 7) + "\n";
    return text + "\n`tvctl VERB --help` explains each verb.\n";
  }
  return Helps().at(verb);
}

bool IsVerb(const std::string& verb) { return Helps().count(verb) != 0; }

void RunVerb(const std::string& verb, const std::vector<std::string>& args, const std::string& dbPath,
             std::ostream& out) {
  tvsim::Control control(dbPath);
  if (verb == "load") {
    Expect(verb, args, 1, 1);
    control.LoadFile(args[0]);
  } else if (verb == "show") {
    Show(args, control, out);
  } else if (verb == "set") {
    Expect(verb, args, 2, 2);
    control.Set(args[0], args[1]);
  } else if (verb == "reset") {
    Expect(verb, args, 0, 0);
    control.Reset();
  } else if (verb == "tune") {
    Tune(args, control);
  } else if (verb == "fault") {
    Fault(args, control, out);
  } else if (verb == "recording") {
    Expect(verb, args, 2, 2);
    if (args[0] == "start") {
      control.StartRecording(ServiceId(verb, args[1]));
    } else if (args[0] == "stop") {
      control.StopRecording(ServiceId(verb, args[1]));
    } else {
      throw Usage(verb, "expected start or stop, not \"" + args[0] + "\"");
    }
  } else if (verb == "recorder-event") {
    Expect(verb, args, 2, 7);
    std::vector<int32_t> words;
    for (size_t i = 2; i < args.size(); ++i) words.push_back(Word(verb, args[i], "word"));
    control.SendRecorderEvent(Word(verb, args[0], "event"), Word(verb, args[1], "result"), words);
  } else if (verb == "playback") {
    Expect(verb, args, 1, 1);
    control.SetPlaying(Number(verb, args[0], "playback state", 0, 1));
  } else {
    throw Usage("", "unknown verb \"" + verb + "\"");
  }
}

}  // namespace tvctl
