// Tuning-mode records of the TV middleware.
#pragma once

#include <cstdint>

// Base of the middleware's marshallable records. The application never reads or
// sets its state; it only has to be copied along with the record.
class RecordBase {
 public:
  RecordBase() = default;
  RecordBase(const RecordBase&) = default;
  RecordBase& operator=(const RecordBase&) = default;
  virtual ~RecordBase() = default;

 protected:
  int32_t m_nRecordFlags = 0;
};

enum AntennaMode : int32_t {
  ANTENNA_MODE_NONE = -1,
  ANTENNA_MODE_0 = 0,
  ANTENNA_MODE_1 = 1,
  ANTENNA_MODE_SATELLITE = 2,
};

// The middleware's service-mode numbering; only the named values carry meaning here.
enum ServiceMode : int32_t {
  SERVICE_MODE_NONE = -1,
  SERVICE_MODE_SA_ATV = 2,
};

enum ChannelKind : int32_t {
  CHANNEL_KIND_ANY = -1,
};

enum ProfileKind : int32_t {
  PROFILE_MAIN = 1,
  PROFILE_SCREEN = 101,
};

enum NavigationMode : int32_t {
  NAVIGATION_MODE_ALL = 1,
};

enum NavigationSortMode : int32_t {
  NAVIGATION_SORT_MODE_DEFAULT = 0,
};

class TvMode : public RecordBase {
 public:
  TvMode() : antennaMode(ANTENNA_MODE_NONE), serviceMode(SERVICE_MODE_NONE) {}
  TvMode(AntennaMode antenna, ServiceMode service) : antennaMode(antenna), serviceMode(service) {}

  bool operator==(const TvMode& other) const {
    return antennaMode == other.antennaMode && serviceMode == other.serviceMode;
  }
  bool operator!=(const TvMode& other) const { return !(*this == other); }

  AntennaMode antennaMode;
  ServiceMode serviceMode;
};
