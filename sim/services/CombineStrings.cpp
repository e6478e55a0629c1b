// Fills a translated template: "%s" takes the next string, "%1$s" to "%4$s" a
// string by position, "%%" is a percent sign; anything else is copied as it is.
#include "CombineStrings.h"

#include <string>

#include "PortCall.h"

namespace {

// Cuts text to at most size bytes without splitting a UTF-8 sequence.
size_t FitUtf8(const std::string& text, size_t size) {
  if (text.size() <= size) return text.size();
  size_t end = size;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return end;
}

std::string Fill(const char* format, const char* const strings[4]) {
  std::string text;
  int next = 0;
  for (const char* p = format; *p != '\0'; ++p) {
    if (p[0] == '%' && p[1] == '%') {
      text += '%';
      ++p;
    } else if (p[0] == '%' && p[1] == 's') {
      if (next < 4 && strings[next]) text += strings[next];
      ++next;
      ++p;
    } else if (p[0] == '%' && p[1] >= '1' && p[1] <= '4' && p[2] == '$' && p[3] == 's') {
      const char* value = strings[p[1] - '1'];
      if (value) text += value;
      p += 3;
    } else {
      text += *p;
    }
  }
  return text;
}

}  // namespace

extern "C" int CombineStrings(char* out, int size, const char* format, const char* s1, const char* s2,
                              const char* s3, const char* s4) {
  nlohmann::json args = {{"size", size}, {"format", format ? nlohmann::json(format) : nlohmann::json(nullptr)}};
  return tvsim::RunPurePort<int>("CombineStrings", args, {}, 0, [&](nlohmann::json& result) {
    if (out == nullptr || size < 0) return 0;
    const char* const strings[4] = {s1, s2, s3, s4};
    const std::string text = format ? Fill(format, strings) : std::string();
    const size_t length = FitUtf8(text, static_cast<size_t>(size));
    text.copy(out, length);
    out[length] = '\0';
    result["text"] = text.substr(0, length);
    return static_cast<int>(length);
  });
}
