/* The platform settings store, system information and system settings.
   Every call returns 0 on success and leaves its output untouched on failure. */
#pragma once

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _keynode_t keynode_t;
typedef void (*vconf_callback_fn)(keynode_t* node, void* user_data);

int vconf_get_int(const char* key, int* value);
int vconf_get_bool(const char* key, int* value);
/* Callbacks run on the application's main loop, also for changes made by other processes. */
int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* user_data);
int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback);
const char* vconf_keynode_get_name(keynode_t* node);

typedef enum {
  SYSTEM_INFO_KEY_TUNER_COUNT = 18,
  SYSTEM_INFO_KEY_RECORDABLE_TUNER_COUNT = 238,
  SYSTEM_INFO_KEY_REGION_KIND = 285,
} system_info_key_e;

int system_info_get_value_int(system_info_key_e key, int* value);
int system_info_get_custom_bool(const char* key, bool* value);

typedef enum {
  SYSTEM_SETTINGS_KEY_COUNTRY = 57,
} system_settings_key_e;

int system_settings_get_value_int(system_settings_key_e key, int* value);

#ifdef __cplusplus
}
#endif
