// Navigators and the service store of the TV middleware.
#pragma once

#include <string>

#include "ServiceData.h"
#include "TvMode.h"

class Navigator {
 public:
  virtual ~Navigator() = default;
  // 1 when the current mode was written; 0 or negative on failure.
  virtual int GetTvMode(TvMode& mode) = 0;
  // Greater than 0 on success.
  virtual int SetTvMode(TvMode mode, const std::string& option) = 0;
  // 1 on success.
  virtual int GetCurrentService(TvMode mode, const ServiceQuery& fetch, ServiceData& out) = 0;
  // Greater than 0 on success; count then holds the number of services.
  virtual int GetServiceCount(const ServiceQuery& criteria, int& count, TvMode mode, int reserved) = 0;
};

class ServiceStore {
 public:
  virtual ~ServiceStore() = default;
  // Greater than 0 when a service was found and written.
  virtual int FindService(const ServiceQuery& criteria, ServiceData* out, int count) = 0;
};

// The hub keeps ownership of what it hands out; callers never release it.
class ServiceHub {
 public:
  // 0 on success; the navigator may still be null.
  static int OpenNavigator(ProfileKind profile, int index, Navigator** navigator);
  // 0 on success.
  static int OpenServiceStore(ServiceStore** store);
};
