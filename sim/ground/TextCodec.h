// Text conversions of the middleware, through iconv: its UTF-16 keeps the
// big-endian byte order in memory, so each char16_t reads byte-swapped here.
#pragma once

#include <cstddef>
#include <string>

namespace tvsim {

// UTF-8 to UTF-16 with big-endian byte order in memory. False for invalid UTF-8.
bool Utf8ToUtf16BigEndian(const std::string& text, std::u16string* out);

// Converts inBytes bytes of big-endian UTF-16 into out (outSize bytes). Returns
// the bytes written, or -1 when the input is invalid or out is too small (what
// fitted is written all the same).
long Utf16BigEndianToUtf8(const void* in, size_t inBytes, char* out, size_t outSize);

}  // namespace tvsim
