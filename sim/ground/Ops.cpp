#include "Ops.h"

namespace tvsim {

const std::vector<OpInfo>& AllOps() {
  static const std::vector<OpInfo> ops = {
      {"OpenNavigator", "screen", true, true, false},
      {"OpenServiceStore", "", true, true, false},
      {"GetTvMode", "screen", true, false, false},
      {"SetTvMode", "screen", true, false, false},
      {"GetCurrentService", "mode", true, false, true},
      {"GetServiceCount", "mode", true, false, false},
      {"FindService", "service", true, false, true},
      {"GetNavigationCriteria", "", true, false, false},
      {"GetServiceName", "service", true, false, false},
      {"GetChannelTypeString", "mode", true, false, false},
      {"GetChannelNumberString", "mode", true, false, false},
      {"UnicodeToUtf8Buffer", "", true, false, false},
      {"ProfileServiceInstance", "", false, true, false},
      {"GetInstalledOperatorProfiles", "profile", true, false, false},
      {"GetPresentProgram", "service", true, false, false},
      {"GetVirtualChannelsAPI", "", false, true, false},
      {"LogKpiEvent", "event", true, false, false},
      {"IsFilterDetailEnabled", "", true, false, false},
      {"CombineStrings", "", true, false, false},
      {"rec_service_init", "", true, false, false},
      {"rec_service_destroy", "", true, false, false},
      {"rec_register_to_other_apps_cb", "", true, false, false},
      {"rec_unregister_to_other_apps_cb", "", true, false, false},
      {"rec_get_recording_service_id_list", "", true, false, false},
      {"rec_stop_recording", "service", true, false, false},
      {"rec_is_playing_multimedia", "", true, false, false},
      {"rec_stop_playing_sync", "", true, false, false},
      {"vconf_get_int", "key", true, false, false},
      {"vconf_get_bool", "key", true, false, false},
      {"vconf_notify_key_changed", "key", true, false, false},
      {"vconf_ignore_key_changed", "key", true, false, false},
      {"system_info_get_value_int", "key", true, false, false},
      {"system_info_get_custom_bool", "key", true, false, false},
      {"system_settings_get_value_int", "key", true, false, false},
      {"ui_app_main", "", true, false, false},
  };
  return ops;
}

const OpInfo* FindOp(const std::string& name) {
  for (const OpInfo& op : AllOps()) {
    if (name == op.name) return &op;
  }
  return nullptr;
}

}  // namespace tvsim
