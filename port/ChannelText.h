// Display texts of the middleware: service names, antenna names, channel numbers.
#pragma once

#include <cstdint>
#include <string>

#include "TvMode.h"

class ServiceNames {
 public:
  // Writes the service's name as UTF-16 with big-endian byte order in memory.
  static bool GetServiceName(uint64_t serviceId, std::u16string& name, bool flag);
};

class ChannelText {
 public:
  // The display name of an antenna (UTF-8, possibly empty).
  static std::string GetChannelTypeString(TvMode mode, ChannelKind kind);
  // The channel number as shown to the viewer (UTF-8).
  static std::string GetChannelNumberString(TvMode mode, int kind, uint16_t major, uint16_t minor);
};

// Converts length UTF-16 units (big-endian byte order in memory) to UTF-8,
// writing at most outSize bytes. Non-zero on success.
int UnicodeToUtf8Buffer(char* out, int outSize, const uint16_t* text, int length);
