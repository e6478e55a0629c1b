// Middleware text (UTF-16 with big-endian bytes in memory) through the
// utilities and the platform's converter, with output buffers of exactly the
// size passed, so that ASan sees every byte written past them.
// Input: one byte of output room, then the UTF-16 units.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "ChannelText.h"
#include "FuzzEnv.h"
#include "Util.h"

namespace {

bool IsLineBreak(unsigned short unit) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(&unit);
  return bytes[0] == 0x00 && (bytes[1] == 0x0A || bytes[1] == 0x0D);
}

void Require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzzenv::Prepare(false);  // conversions need no TV state
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const size_t room = data[0];
  ++data;
  --size;
  const size_t n = size / 2;

  // Line breaks leave in place: the kept units, then zero units up to the old end.
  std::vector<unsigned short> units(n + 1, 0);
  std::memcpy(units.data(), data, n * 2);
  const std::vector<unsigned short> before = units;
  size_t length = 0;
  while (units[length] != 0) ++length;
  Util::TransStrExceptLF(units.data());
  size_t out = 0;
  for (size_t i = 0; i < length; ++i) {
    if (!IsLineBreak(before[i])) Require(units[out++] == before[i]);
  }
  for (; out <= length; ++out) Require(units[out] == 0);
  for (size_t i = length + 1; i <= n; ++i) Require(units[i] == before[i]);  // past the terminator: untouched

  // The shown name: UTF-8 without line breaks, at most four bytes a unit.
  std::u16string text(n, u'\0');
  std::memcpy(text.data(), data, n * 2);
  const std::string name = Util::Twstring2String(text);
  Require(name.size() <= 4 * n);
  Require(name.find_first_of("\r\n") == std::string::npos);
  Require(fuzzenv::ValidUtf8(name));

  // Bounded conversions into exactly `room` bytes.
  std::unique_ptr<char[]> in(new char[n * 2]);
  std::memcpy(in.get(), data, n * 2);
  std::unique_ptr<char[]> buffer(new char[room]);
  Util::Unicode2Utf8(buffer.get(), static_cast<unsigned>(room), in.get(), static_cast<unsigned>(n * 2));

  std::unique_ptr<uint16_t[]> source(new uint16_t[n]);
  std::memcpy(source.get(), data, n * 2);
  std::unique_ptr<char[]> converted(new char[room]);
  if (UnicodeToUtf8Buffer(converted.get(), static_cast<int>(room), source.get(), static_cast<int>(n)) != 0) {
    Require(fuzzenv::ValidUtf8(std::string(converted.get(), strnlen(converted.get(), room))));
  }
  return 0;
}
