// The KPI sink: every event the application reports is recorded with its time.
#include "PortCall.h"
#include "SettingsTable.h"
#include "VirtualChannels.h"

namespace {

using nlohmann::json;
using tvsim::PortContext;

class RecordingKpiSink : public VirtualChannelsApi {
 public:
  int LogKpiEvent(int status, const std::string& eventName, const std::string& category,
                  const std::string& desc) override {
    json args = {{"status", status}, {"event", eventName}, {"code", category}, {"desc", desc}};
    return tvsim::RunPort<int>("LogKpiEvent", args, {eventName}, -1, [&](PortContext& c) {
      tvsim::RecordKpiEvent(c.store, status, eventName, category, desc);
      return 0;
    });
  }

  int IsFilterDetailEnabled() override {
    return tvsim::RunPort<int>("IsFilterDetailEnabled", json::object(), {}, 0, [&](PortContext& c) {
      const auto setting = tvsim::ReadSettingFrom(c.store, "kpi/filter_detail");
      return (setting && setting->type == tvsim::SettingValue::Type::Bool && setting->number != 0) ? 1 : 0;
    });
  }
};

}  // namespace

VirtualChannelsApi* VirtualChannels::GetVirtualChannelsAPI() {
  return tvsim::RunPort<VirtualChannelsApi*>("GetVirtualChannelsAPI", json::object(), {}, nullptr,
                                             [&](PortContext& c) -> VirtualChannelsApi* {
                                               static auto* sink = new RecordingKpiSink();
                                               return (c.fault && c.fault->null) ? nullptr : sink;
                                             });
}
