/* The TV's recorder service. Results are 0 on success, except rec_service_init. */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Passed by value to the registered callback; event 1 with result 1 reports a
   stopped recording. */
typedef struct {
  int32_t event;
  int32_t result;
  int32_t data[5];
} rec_result;

typedef void (*rec_other_apps_cb)(rec_result result, void* data);

int rec_service_init(void); /* 1 on success */
int rec_service_destroy(void);
int rec_register_to_other_apps_cb(rec_other_apps_cb callback, void* data);
int rec_unregister_to_other_apps_cb(rec_other_apps_cb callback);
/* size is the size of ids in bytes; count receives the number of recordings. */
int rec_get_recording_service_id_list(uint64_t* ids, int size, int* count, int reserved);
int rec_stop_recording(uint64_t serviceId, int mode, const char* callerAppId);
int rec_is_playing_multimedia(int* playing);
int rec_stop_playing_sync(const char* callerAppId);

#ifdef __cplusplus
}
#endif
