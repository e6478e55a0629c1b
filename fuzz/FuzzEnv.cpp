#include "FuzzEnv.h"

#include <cstdlib>
#include <filesystem>

#include "Platform.h"

namespace fuzzenv {

namespace {

std::string s_dir;

void RemoveFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(s_dir, ignored);
}

}  // namespace

const std::string& Prepare(bool withDatabase) {
  if (s_dir.empty()) {
    std::string pattern = (std::filesystem::temp_directory_path() / "tvsim-fuzz-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    s_dir = pattern;
    std::atexit(RemoveFolder);
  }
  // /dev/null is a file, so no database can be made below it.
  const std::string db = withDatabase ? s_dir + "/tv.db" : "/dev/null/tv.db";
  setenv("TVSIM_DB", db.c_str(), 1);
  setenv("TVSIM_LOG", "/dev/null", 1);
  tvsim::ReopenPlatform();
  return s_dir;
}

std::vector<std::string> Split(const uint8_t* data, size_t size, size_t max) {
  std::vector<std::string> pieces;
  size_t start = 0;
  for (size_t i = 0; i < size && pieces.size() + 1 < max; ++i) {
    if (data[i] == 0) {
      pieces.emplace_back(reinterpret_cast<const char*>(data + start), i - start);
      start = i + 1;
    }
  }
  pieces.emplace_back(reinterpret_cast<const char*>(data + start), size - start);
  return pieces;
}

bool ValidUtf8(const std::string& text) {
  size_t i = 0;
  while (i < text.size()) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    size_t length;
    uint32_t value;
    if (c < 0x80) {
      ++i;
      continue;
    } else if ((c & 0xE0) == 0xC0) {
      length = 2;
      value = c & 0x1F;
    } else if ((c & 0xF0) == 0xE0) {
      length = 3;
      value = c & 0x0F;
    } else if ((c & 0xF8) == 0xF0) {
      length = 4;
      value = c & 0x07;
    } else {
      return false;
    }
    if (i + length > text.size()) return false;
    for (size_t k = 1; k < length; ++k) {
      const unsigned char next = static_cast<unsigned char>(text[i + k]);
      if ((next & 0xC0) != 0x80) return false;
      value = (value << 6) | (next & 0x3F);
    }
    static const uint32_t kMinimum[] = {0, 0, 0x80, 0x800, 0x10000};
    if (value < kMinimum[length] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return false;
    i += length;
  }
  return true;
}

}  // namespace fuzzenv
