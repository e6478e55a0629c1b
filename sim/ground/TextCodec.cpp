#include "TextCodec.h"

#include <iconv.h>

#include <vector>

namespace tvsim {

namespace {

// Converts with one iconv call; returns the bytes written or -1.
long Convert(const char* to, const char* from, const void* in, size_t inBytes, char* out, size_t outSize) {
  iconv_t converter = iconv_open(to, from);
  if (converter == reinterpret_cast<iconv_t>(-1)) return -1;
  char* input = const_cast<char*>(static_cast<const char*>(in));
  size_t inLeft = inBytes;
  char* output = out;
  size_t outLeft = outSize;
  const size_t rc = iconv(converter, &input, &inLeft, &output, &outLeft);
  iconv_close(converter);
  const long written = static_cast<long>(outSize - outLeft);
  return (rc == static_cast<size_t>(-1) || inLeft != 0) ? -1 : written;
}

}  // namespace

bool Utf8ToUtf16BigEndian(const std::string& text, std::u16string* out) {
  std::vector<char> buffer(text.size() * 2 + 2);
  const long written = Convert("UTF-16BE", "UTF-8", text.data(), text.size(), buffer.data(), buffer.size());
  if (written < 0) return false;
  if (out) out->assign(reinterpret_cast<const char16_t*>(buffer.data()), static_cast<size_t>(written) / 2);
  return true;
}

long Utf16BigEndianToUtf8(const void* in, size_t inBytes, char* out, size_t outSize) {
  return Convert("UTF-8", "UTF-16BE", in, inBytes, out, outSize);
}

}  // namespace tvsim
