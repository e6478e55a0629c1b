// Template filling: any template and strings, any output size. The text is
// the full filling cut to at most size bytes (never inside a UTF-8 sequence),
// then a terminating zero, all inside the size + 1 bytes the caller provides.
// Input: two bytes of size, then the template and up to four strings
// separated by zero bytes (a missing string is passed as null).
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "CombineStrings.h"
#include "FuzzEnv.h"

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzzenv::Prepare(false);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const int room = (data[0] | (data[1] << 8)) % 1024;
  const std::vector<std::string> pieces = fuzzenv::Split(data + 2, size - 2, 5);
  const char* strings[4] = {};
  for (size_t i = 1; i < pieces.size(); ++i) strings[i - 1] = pieces[i].c_str();
  const char* format = pieces[0].c_str();

  // Room for the whole filling: every placeholder takes at least two bytes of
  // the template and no string is longer than the input.
  size_t longest = 0;
  for (size_t i = 1; i < pieces.size(); ++i) longest = std::max(longest, pieces[i].size());
  const int whole = static_cast<int>(pieces[0].size() + (pieces[0].size() / 2 + 1) * longest + 16);
  std::vector<char> full(static_cast<size_t>(whole) + 1);
  const int fullLength = CombineStrings(full.data(), whole, format, strings[0], strings[1], strings[2], strings[3]);
  Require(fullLength >= 0 && fullLength < whole);

  std::unique_ptr<char[]> out(new char[static_cast<size_t>(room) + 1]);
  const int length = CombineStrings(out.get(), room, format, strings[0], strings[1], strings[2], strings[3]);
  Require(length >= 0 && length <= room);
  Require(out[length] == '\0');
  Require(std::memcmp(out.get(), full.data(), static_cast<size_t>(length)) == 0);
  // Cut at a character boundary: a valid filling stays valid.
  const std::string text(full.data(), static_cast<size_t>(fullLength));
  if (fuzzenv::ValidUtf8(text)) {
    Require(fuzzenv::ValidUtf8(std::string(out.get(), static_cast<size_t>(length))));
    // Nothing is dropped that would have fitted, except a partly fitting character.
    Require(fullLength <= room || room - length < 4);
  }
  return 0;
}
