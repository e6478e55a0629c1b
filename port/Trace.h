// The platform's trace facility: values recorded at named points of the code,
// silent unless the platform turns tracing on.
//
// Usage, in a callback:
//   static trace::TraceCodeLocation s_location("src/View.cpp", __LINE__,
//       "static void View::m_FocusedCB(void*, Evas_Object*, void*)");
//   trace::TraceScope scope(s_location);          // lives until the callback returns
//   {
//     trace::TraceScopeHandler handler = trace::TraceScopeHandler::Instance(scope);
//     if (handler.IsActive()) scope.m_Store(elm_object_part_text_get(object, NULL));
//   }
// Each m_Store records one item (index 0, 1, ...); the recorded items are written
// out when the scope ends. A null text is recorded as null.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace trace {

// One trace point: where it is and which function it is in. Static per point.
struct TraceCodeLocation {
  TraceCodeLocation(const char* file, int line, const char* signature)
      : m_pFile(file), m_nLine(line), m_pSignature(signature) {}

  const char* m_pFile;
  int m_nLine;
  const char* m_pSignature;
  // Per-location slot: the point's number among the points hit so far (0 until
  // the first scope is built from it).
  int m_nSlot = 0;
};

// One recorded value: its type name, a marker of its kind and its bytes, or null.
class TraceCallItem {
 public:
  static constexpr uint16_t kTextMarker = 16383;

  void Store(const void* data, std::size_t length);
  void AddNull();

  bool IsNull() const { return m_bNull; }
  const std::string& Bytes() const { return m_strBytes; }
  std::string m_strType;
  uint16_t m_nMarker = 0;

 private:
  bool m_bNull = true;
  std::string m_strBytes;
};

// Decides which items of a scope are recorded: all of them, or only the listed indexes.
class TraceCondition {
 public:
  TraceCondition() = default;
  explicit TraceCondition(std::vector<int> items) : m_vecItems(std::move(items)) {}
  bool ItemExists(int itemIndex) const;

 private:
  std::vector<int> m_vecItems;  // empty: every item
};

// The facility's queue of recently written trace lines (the last kCapacity).
class TracePattern {
 public:
  static constexpr std::size_t kCapacity = 64;
  static TracePattern* Instance();

  void AddItemToQueue(const std::string& line);
  std::deque<std::string> Queue() const { return m_queue; }
  void Clear() { m_queue.clear(); }

 private:
  std::deque<std::string> m_queue;
};

struct TraceDemangler {
  // The readable form of a mangled type name (typeid(...).name()).
  static std::string Demangle(const char* mangled);
};

// The record of one pass through a trace point.
class TraceScope {
 public:
  explicit TraceScope(TraceCodeLocation& location);
  ~TraceScope();  // writes the recorded items out
  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;

  // Records a text value (null allowed) as the next item.
  void m_Store(const char* text);
  void SetCondition(const TraceCondition* condition) { m_pCondition = condition; }
  int ItemIndex() const { return m_nItemIndex; }
  const TraceCodeLocation& Location() const { return m_location; }

 private:
  struct Pending {
    int index;
    TraceCallItem item;
  };
  // Turns a recorded item into the text written to the sink.
  static std::string m_VoidToType(const TraceCallItem& item);

  TraceCodeLocation& m_location;
  const TraceCondition* m_pCondition = nullptr;
  int m_nItemIndex = 0;
  std::vector<Pending> m_vecPending;
};

// Whether a scope records anything: only while tracing is on (TVSIM_TRACE).
class TraceScopeHandler {
 public:
  static TraceScopeHandler Instance(TraceScope& scope);
  bool IsActive() const { return m_bActive; }

 private:
  explicit TraceScopeHandler(bool active) : m_bActive(active) {}
  bool m_bActive;
};

}  // namespace trace
