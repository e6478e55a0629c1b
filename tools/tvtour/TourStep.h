// One step of a tour file (docs/tours.md), checked as it is read, and the
// reader that turns every mistake into a refusal naming the file, the JSON
// pointer and the problem.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

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
  std::string what;     // key name, tvctl verb, wait or expectation kind, screenshot name, signal name
  nlohmann::json args;  // the step's object as written (checked)
  std::string pointer;  // where it is in the file, for messages
  std::string label;    // one line for the progress output and the report
  std::string note;
  std::string mark;  // names the moment this step saw or did its thing
  std::optional<At> at;
  std::optional<double> delay;  // keys: seconds before it; absent: once the screen is still
  double timeout = 10;          // waits
};

// Reads values of one tour file; each check refuses with that file's name.
class FileReader {
 public:
  explicit FileReader(std::string file) : m_file(std::move(file)) {}

  [[noreturn]] void Refuse(const std::string& pointer, const std::string& problem) const;
  void Object(const nlohmann::json& value, const std::string& pointer, std::initializer_list<const char*> allowed,
              std::initializer_list<const char*> required = {}) const;
  std::string String(const nlohmann::json& value, const std::string& pointer) const;
  std::string NonEmptyString(const nlohmann::json& value, const std::string& pointer) const;
  bool Flag(const nlohmann::json& value, const std::string& pointer) const;
  int64_t Int(const nlohmann::json& value, const std::string& pointer, int64_t min, int64_t max) const;
  uint64_t Id(const nlohmann::json& value, const std::string& pointer) const;  // a service id
  // A number of seconds in min..max; min itself only when minAllowed.
  double Seconds(const nlohmann::json& value, const std::string& pointer, double min, double max,
                 bool minAllowed) const;
  std::string Regex(const nlohmann::json& value, const std::string& pointer) const;
  const std::string& File() const { return m_file; }

 private:
  std::string m_file;
};

// The longest wait a tour may ask for, in seconds.
constexpr double kLongestWait = 3600;

// Reads the step at pointer. Marks set by earlier steps are in marks (this
// step's is added); screenshot names in shots.
Step ReadStep(const FileReader& reader, const nlohmann::json& value, const std::string& pointer,
              std::set<std::string>& marks, std::set<std::string>& shots);

// The viewer's key names and the X key each one is (null for another name).
const char* KeysymOfKey(const std::string& key);

}  // namespace tvtour
