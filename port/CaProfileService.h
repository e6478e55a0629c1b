// Conditional-access operator profiles installed on the TV.
#pragma once

#include <cstdint>
#include <list>
#include <set>
#include <string>

#include "TvMode.h"

struct OperatorProfile {
  uint8_t bEnabled = 0;
  int32_t nProfileId = 0;
  std::u16string strOperatorName;
  std::string strOperatorCode;
  std::set<AntennaMode> setAntennaModes;
  TvMode tvMode;
  int32_t nNetworkId = 0;
  int32_t nSatelliteId = 0;
  uint8_t bVisible = 0;
  int32_t nPriority = 0;
  std::string strCountry;
  std::string strLanguage;
  std::string strLogoPath;
  uint8_t bRegional = 0;
  std::string strDescription;
};

class CaProfileService {
 public:
  // The service, or null when it is not available.
  static CaProfileService* ProfileServiceInstance();

  virtual ~CaProfileService() = default;
  // Fills profiles with the installed profiles in the middleware's order.
  virtual bool GetInstalledOperatorProfiles(std::list<OperatorProfile>& profiles, int reserved) = 0;
};
