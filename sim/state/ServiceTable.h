// Services and tuning modes in the database: the queries behind navigators,
// the service store, service names and the programme guide.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Faults.h"
#include "ServiceData.h"
#include "Store.h"
#include "TvMode.h"

namespace tvsim {

struct ServiceRow {
  uint64_t id = 0;
  int antenna = -1;
  int service = -1;
  int64_t major = -1;            // -1: no number (the record then holds all bits set)
  std::optional<int64_t> minor;  // absent: the record carries no minor number
  std::optional<int64_t> kind;   // absent: the record carries no number kind
  std::string name;
  int64_t navigation = 0;  // bit n set: listed in navigation mode n
  std::optional<std::string> programme;
  bool current = false;
};

std::optional<ServiceRow> FindServiceById(Store& store, uint64_t id);
// The mode's current service: the one marked current, else the lowest channel number.
std::optional<ServiceRow> CurrentService(Store& store, const TvMode& mode);
// Services matching attribute conditions (ids 1, 12, 13, 14) and a navigation
// mode (-1: any), in channel order, at most limit. nullopt for an unknown attribute.
std::optional<std::vector<ServiceRow>> FindServices(Store& store, const std::vector<std::pair<int, uint64_t>>& where,
                                                    int navigationMode, int limit);
// A COUNT query on the mode index.
int64_t CountServices(Store& store, const TvMode& mode, int navigationMode);

// Fills out with the fetched attributes of row (all known ones when fetch is
// empty), then applies a no_table or no_attribute fault.
void FillServiceData(const ServiceRow& row, const std::vector<int>& fetch, const std::optional<Fault>& fault,
                     ServiceData& out);

// The mode of a screen; a screen without a mode of its own shows screen 0's.
TvMode ScreenMode(Store& store, int screen);
void SetScreenMode(Store& store, int screen, const TvMode& mode);

std::string ModeTarget(const TvMode& mode);  // "antenna/service", as fault targets name modes

constexpr int kMaxNavigationMode = 62;

}  // namespace tvsim
