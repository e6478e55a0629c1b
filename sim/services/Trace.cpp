// The trace facility of port/Trace.h. TVSIM_TRACE turns it on: "1" writes each
// recorded value as a log line (tag "tvsim-trace"), any other value that is not
// "0" is taken as a file to append the lines to. Unset: nothing is recorded.
#include "Trace.h"

#include <cxxabi.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <typeinfo>

#include "Log.h"

namespace trace {
namespace {

const char kTag[] = "tvsim-trace";

// "" when tracing is off, "1" for the log, else the file to append to. Read on
// every use, so a test or a person can switch it while the process runs.
std::string Sink() {
  const char* value = std::getenv("TVSIM_TRACE");
  if (value == nullptr || *value == '\0' || std::strcmp(value, "0") == 0) return "";
  return value;
}

std::string Quoted(const std::string& bytes) {
  std::string out = "\"";
  for (unsigned char c : bytes) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c < 0x20 || c == 0x7f) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02x", c);
      out += escaped;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out + "\"";
}

void Write(const std::string& sink, const std::string& line) {
  if (sink == "1") {
    __dlog_print(LOG_ID_MAIN, DLOG_INFO, kTag, "%s", line.c_str());
    return;
  }
  if (FILE* file = std::fopen(sink.c_str(), "a")) {
    std::fprintf(file, "%s\n", line.c_str());
    std::fclose(file);
  }
}

int s_nextSlot = 1;

}  // namespace

void TraceCallItem::Store(const void* data, std::size_t length) {
  m_bNull = false;
  m_strBytes.assign(static_cast<const char*>(data), length);
}

void TraceCallItem::AddNull() {
  m_bNull = true;
  m_strBytes.clear();
}

bool TraceCondition::ItemExists(int itemIndex) const {
  if (m_vecItems.empty()) return true;
  for (int item : m_vecItems) {
    if (item == itemIndex) return true;
  }
  return false;
}

TracePattern* TracePattern::Instance() {
  static TracePattern instance;
  return &instance;
}

void TracePattern::AddItemToQueue(const std::string& line) {
  m_queue.push_back(line);
  while (m_queue.size() > kCapacity) m_queue.pop_front();
}

std::string TraceDemangler::Demangle(const char* mangled) {
  if (mangled == nullptr) return "";
  int status = 0;
  std::unique_ptr<char, void (*)(void*)> readable(abi::__cxa_demangle(mangled, nullptr, nullptr, &status),
                                                   std::free);
  return status == 0 && readable ? std::string(readable.get()) : std::string(mangled);
}

TraceScope::TraceScope(TraceCodeLocation& location) : m_location(location) {
  if (m_location.m_nSlot == 0) m_location.m_nSlot = s_nextSlot++;
}

TraceScope::~TraceScope() {
  if (m_vecPending.empty()) return;
  const std::string sink = Sink();
  for (const Pending& pending : m_vecPending) {
    const std::string line = std::string(m_location.m_pFile ? m_location.m_pFile : "?") + ":" +
                             std::to_string(m_location.m_nLine) + " " +
                             (m_location.m_pSignature ? m_location.m_pSignature : "?") + " item " +
                             std::to_string(pending.index) + " " + pending.item.m_strType + " " +
                             m_VoidToType(pending.item);
    TracePattern::Instance()->AddItemToQueue(line);
    if (!sink.empty()) Write(sink, line);
  }
}

void TraceScope::m_Store(const char* text) {
  const int index = m_nItemIndex++;
  if (m_pCondition != nullptr && !m_pCondition->ItemExists(index)) return;
  TraceCallItem item;
  if (text != nullptr) {
    item.Store(text, std::strlen(text));
  } else {
    item.AddNull();
  }
  item.m_strType = TraceDemangler::Demangle(typeid(text).name());
  item.m_nMarker = TraceCallItem::kTextMarker;
  m_vecPending.push_back({index, item});
}

std::string TraceScope::m_VoidToType(const TraceCallItem& item) {
  return item.IsNull() ? "null" : Quoted(item.Bytes());
}

TraceScopeHandler TraceScopeHandler::Instance(TraceScope&) { return TraceScopeHandler(!Sink().empty()); }

}  // namespace trace
