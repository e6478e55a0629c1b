#include "ScenarioFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <map>
#include <vector>

#include "Errors.h"
#include "JsonCheck.h"

namespace tvsim {

namespace jc = json_check;
using nlohmann::json;

namespace {

const char* FileKind(mode_t mode) {
  if (S_ISDIR(mode)) return "a directory";
  if (S_ISCHR(mode)) return "a character device";
  if (S_ISBLK(mode)) return "a block device";
  if (S_ISFIFO(mode)) return "a FIFO";
  if (S_ISSOCK(mode)) return "a socket";
  return "not a regular file";
}

[[noreturn]] void RefuseFile(const std::string& path, const std::string& problem) {
  throw ScenarioError(path, "", problem);
}

void CheckKindAndSize(const std::string& path, const struct stat& st) {
  if (!S_ISREG(st.st_mode)) RefuseFile(path, std::string("is ") + FileKind(st.st_mode) + ", not a scenario file");
  if (st.st_size > kMaxScenarioBytes) {
    RefuseFile(path, "has " + std::to_string(st.st_size) + " bytes; a scenario has at most " +
                         std::to_string(kMaxScenarioBytes) + " (32 MiB)");
  }
}

std::string ReadFile(const std::string& path) {
  // Looked at before opening: opening a FIFO would wait for a writer.
  struct stat st;
  if (stat(path.c_str(), &st) != 0) RefuseFile(path, std::string("cannot read the file: ") + std::strerror(errno));
  CheckKindAndSize(path, st);
  // O_NONBLOCK, and the same checks on what was opened, for a file swapped in between.
  const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) RefuseFile(path, std::string("cannot read the file: ") + std::strerror(errno));
  std::string text;
  try {
    if (fstat(fd, &st) != 0) RefuseFile(path, std::string("cannot read the file: ") + std::strerror(errno));
    CheckKindAndSize(path, st);
    // One byte past the limit tells a file that grew meanwhile.
    std::vector<char> buffer(static_cast<size_t>(st.st_size) + 1);
    while (true) {
      if (text.size() > static_cast<size_t>(kMaxScenarioBytes)) {
        RefuseFile(path, "grew past " + std::to_string(kMaxScenarioBytes) + " bytes while being read");
      }
      const ssize_t n = read(fd, buffer.data(), buffer.size());
      if (n < 0 && errno == EINTR) continue;
      if (n < 0) RefuseFile(path, std::string("cannot read the file: ") + std::strerror(errno));
      if (n == 0) break;
      text.append(buffer.data(), static_cast<size_t>(n));
    }
  } catch (...) {
    close(fd);
    throw;
  }
  close(fd);
  return text;
}

// The parser reads through this iterator, which remembers the last character
// read: when a member name has been read, that is its closing quote.
class TrackingIterator {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  TrackingIterator(const char* at, const char** lastRead) : m_at(at), m_lastRead(lastRead) {}
  reference operator*() const {
    *m_lastRead = m_at;
    return *m_at;
  }
  TrackingIterator& operator++() {
    ++m_at;
    return *this;
  }
  TrackingIterator operator++(int) {
    TrackingIterator before = *this;
    ++m_at;
    return before;
  }
  bool operator==(const TrackingIterator& other) const { return m_at == other.m_at; }
  bool operator!=(const TrackingIterator& other) const { return m_at != other.m_at; }

 private:
  const char* m_at;
  const char** m_lastRead;
};

// Builds the document like the library's own parser and refuses what it would let through.
class StrictBuilder {
 public:
  StrictBuilder(const std::string& text, const std::string& source)
      : m_text(text), m_source(source), m_lastRead(text.data()) {}

  json Parse() {
    json::sax_parse(TrackingIterator(m_text.data(), &m_lastRead),
                    TrackingIterator(m_text.data() + m_text.size(), &m_lastRead), this);
    return std::move(m_root);
  }

  bool null() { return Put(nullptr); }
  bool boolean(bool value) { return Put(value); }
  bool number_integer(json::number_integer_t value) { return Put(value); }
  bool number_unsigned(json::number_unsigned_t value) { return Put(value); }
  bool number_float(json::number_float_t value, const std::string&) { return Put(value); }
  bool string(std::string& value) {
    if (value.find('\0') != std::string::npos) Refuse(ValuePointer(), "a NUL character inside a string");
    return Put(std::move(value));
  }
  bool binary(json::binary_t&) { return Put(nullptr); }  // JSON text has none
  bool start_object(std::size_t) { return Open(json::object()); }
  bool start_array(std::size_t) { return Open(json::array()); }
  bool end_object() { return Close(); }
  bool end_array() { return Close(); }
  bool key(std::string& name) {
    Frame& frame = m_frames.back();
    if (name.find('\0') != std::string::npos) Refuse(frame.pointer, "a NUL character inside a member name");
    const size_t at = static_cast<size_t>(m_lastRead - m_text.data());
    const auto [first, fresh] = frame.names.emplace(name, at);
    if (!fresh) {
      Refuse(jc::Child(frame.pointer, name),
             "member \"" + name + "\" given twice (" + Where(at) + ", first at " + Where(first->second) + ")");
    }
    frame.name = name;
    frame.named = true;
    return true;
  }
  bool parse_error(std::size_t position, const std::string&, const json::exception& error) {
    // The library's text without its "[json.exception...] parse error at line L, column C: "
    // lead: the place is added here, also to errors that have none (a number overflow).
    std::string what = error.what();
    const size_t tag = what.find("] ");
    if (tag != std::string::npos) what.erase(0, tag + 2);
    const size_t colon = what.find(": ");
    if (what.rfind("parse error", 0) == 0 && colon != std::string::npos) what.erase(0, colon + 2);
    Refuse(ValuePointer(), "not JSON (" + Where(position > 0 ? position - 1 : 0) + "): " + what);
  }

 private:
  struct Frame {
    json* value;
    std::string pointer;
    std::string name;                     // the member being read (objects), while named
    bool named;
    std::map<std::string, size_t> names;  // each member name and where it was read (objects)
  };

  [[noreturn]] void Refuse(const std::string& pointer, const std::string& problem) const {
    throw ScenarioError(m_source, pointer, problem);
  }

  // "line L column C" of a byte offset, both counted from 1.
  std::string Where(size_t offset) const {
    size_t line = 1, column = 1;
    for (size_t i = 0; i < offset && i < m_text.size(); ++i) {
      if (m_text[i] == '\n') {
        ++line;
        column = 1;
      } else {
        ++column;
      }
    }
    return "line " + std::to_string(line) + " column " + std::to_string(column);
  }

  // Where the next value goes.
  std::string ValuePointer() const {
    if (m_frames.empty()) return "";
    const Frame& frame = m_frames.back();
    if (frame.value->is_object()) return frame.named ? jc::Child(frame.pointer, frame.name) : frame.pointer;
    return jc::Child(frame.pointer, frame.value->size());
  }

  json* Insert(json value) {
    if (m_frames.empty()) {
      m_root = std::move(value);
      return &m_root;
    }
    Frame& frame = m_frames.back();
    if (frame.value->is_object()) {
      frame.named = false;
      return &((*frame.value)[frame.name] = std::move(value));
    }
    frame.value->push_back(std::move(value));
    return &frame.value->back();
  }

  bool Put(json value) {
    Insert(std::move(value));
    return true;
  }

  bool Open(json container) {
    const std::string pointer = ValuePointer();
    if (m_frames.size() >= kMaxScenarioDepth) {
      Refuse(pointer, "nested deeper than " + std::to_string(kMaxScenarioDepth) + " levels");
    }
    m_frames.push_back(Frame{Insert(std::move(container)), pointer, std::string(), false, {}});
    return true;
  }

  bool Close() {
    m_frames.pop_back();
    return true;
  }

  const std::string& m_text;
  const std::string& m_source;
  const char* m_lastRead;
  json m_root;
  std::vector<Frame> m_frames;
};

}  // namespace

json ParseScenarioText(const std::string& text, const std::string& source) {
  return StrictBuilder(text, source).Parse();
}

json ReadScenarioFile(const std::string& path) { return ParseScenarioText(ReadFile(path), path); }

}  // namespace tvsim
