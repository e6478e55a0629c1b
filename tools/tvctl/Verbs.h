// tvctl's verbs: each parses its own arguments and works through tvsim::Control.
#pragma once

#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

namespace tvctl {

// Bad usage: tvctl prints the message and the verb's usage and exits with 2.
class Usage : public std::runtime_error {
 public:
  Usage(const std::string& verb, const std::string& message) : std::runtime_error(message), m_verb(verb) {}
  const std::string& Verb() const { return m_verb; }

 private:
  std::string m_verb;
};

// The help text of a verb ("" for the general help).
std::string HelpText(const std::string& verb);
bool IsVerb(const std::string& verb);

// Runs verb with its arguments on the database at dbPath; writes results to out.
// Throws Usage, tvsim::UsageError, tvsim::ScenarioError or tvsim::StoreError.
void RunVerb(const std::string& verb, const std::vector<std::string>& args, const std::string& dbPath,
             std::ostream& out);

}  // namespace tvctl
