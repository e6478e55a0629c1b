// Errors the simulated TV's control API reports to tvctl and tests.
#pragma once

#include <stdexcept>
#include <string>

namespace tvsim {

// A refused scenario or fault: which file, where in it (a JSON pointer, "" for
// the whole document) and what is wrong.
class ScenarioError : public std::runtime_error {
 public:
  ScenarioError(std::string file, std::string pointer, std::string problem)
      : std::runtime_error(Compose(file, pointer, problem)),
        m_file(std::move(file)),
        m_pointer(std::move(pointer)),
        m_problem(std::move(problem)) {}

  const std::string& File() const { return m_file; }
  const std::string& Pointer() const { return m_pointer; }
  const std::string& Problem() const { return m_problem; }
  ScenarioError InFile(const std::string& file) const { return ScenarioError(file, m_pointer, m_problem); }

 private:
  static std::string Compose(const std::string& file, const std::string& pointer, const std::string& problem) {
    return (file.empty() ? std::string("<scenario>") : file) + ": " + (pointer.empty() ? "/" : pointer) + ": " +
           problem;
  }

  std::string m_file, m_pointer, m_problem;
};

// A request that makes no sense for this TV (unknown key, value of the wrong
// type, no such recording): tvctl exits with status 2 and changes nothing.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tvsim
