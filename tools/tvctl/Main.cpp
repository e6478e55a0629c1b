// tvctl: the command line of the simulated TV.
#include <iostream>
#include <string>
#include <vector>

#include "Environment.h"
#include "Errors.h"
#include "Store.h"
#include "Verbs.h"

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kBadUsage = 2;

int BadUsage(const std::string& verb, const std::string& message) {
  std::cerr << "tvctl: " << message << "\n" << tvctl::HelpText(tvctl::IsVerb(verb) ? verb : "");
  return kBadUsage;
}

}  // namespace

int main(int argc, char** argv) {
  std::string db;
  bool dbGiven = false;
  std::vector<std::string> args;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--db" || arg.rfind("--db=", 0) == 0) {
      // Two databases, or an empty path that would quietly mean the default one, are typos.
      if (dbGiven) return BadUsage("", "--db given twice");
      if (arg == "--db" && i + 1 >= argc) return BadUsage("", "--db needs a path");
      db = arg == "--db" ? argv[++i] : arg.substr(5);
      if (db.empty()) return BadUsage("", "--db needs a path");
      dbGiven = true;
    } else {
      args.push_back(arg);
    }
  }
  if (args.empty()) return BadUsage("", "missing verb");
  const std::string verb = args[0];
  args.erase(args.begin());
  if (verb == "--help" || verb == "-h" || verb == "help") {
    std::cout << tvctl::HelpText("");
    return kDone;
  }
  if (!tvctl::IsVerb(verb)) return BadUsage("", "unknown verb \"" + verb + "\"");
  for (const std::string& arg : args) {
    if (arg == "--help" || arg == "-h") {
      std::cout << tvctl::HelpText(verb);
      return kDone;
    }
  }
  if (db.empty()) db = tvsim::DatabasePath();
  try {
    tvctl::RunVerb(verb, args, db, std::cout);
    return kDone;
  } catch (const tvctl::Usage& e) {
    return BadUsage(e.Verb().empty() ? verb : e.Verb(), e.what());
  } catch (const tvsim::UsageError& e) {
    std::cerr << "tvctl: " << e.what() << "\n";
    return kBadUsage;
  } catch (const tvsim::ScenarioError& e) {
    std::cerr << "tvctl: refused: " << e.what() << "\n";
    return kBadUsage;
  } catch (const std::exception& e) {
    std::cerr << "tvctl: " << e.what() << "\n";
    return kFailed;
  }
}
