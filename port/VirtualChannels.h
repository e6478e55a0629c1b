// The TV's KPI sink.
#pragma once

#include <string>

class VirtualChannelsApi {
 public:
  virtual ~VirtualChannelsApi() = default;
  virtual int LogKpiEvent(int status, const std::string& eventName, const std::string& category,
                          const std::string& desc) = 0;
  virtual int IsFilterDetailEnabled() = 0;
};

class VirtualChannels {
 public:
  // The sink, owned by the middleware; null when it is not available.
  static VirtualChannelsApi* GetVirtualChannelsAPI();
};
