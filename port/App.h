/* The native application framework: lifecycle callbacks and the main loop. */
#pragma once

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct app_control_s* app_control_h;
typedef struct app_event_info* app_event_info_h;
typedef struct app_event_handler* app_event_handler_h;

typedef bool (*app_create_cb)(void* user_data);
typedef void (*app_terminate_cb)(void* user_data);
typedef void (*app_pause_cb)(void* user_data);
typedef void (*app_resume_cb)(void* user_data);
typedef void (*app_control_cb)(app_control_h app_control, void* user_data);
typedef void (*app_event_cb)(app_event_info_h event_info, void* user_data);

typedef struct {
  app_create_cb create;
  app_terminate_cb terminate;
  app_pause_cb pause;
  app_resume_cb resume;
  app_control_cb app_control;
} ui_app_lifecycle_callback_s;

typedef enum {
  APP_EVENT_LOW_MEMORY = 0,
  APP_EVENT_LOW_BATTERY = 1,
  APP_EVENT_LANGUAGE_CHANGED = 2,
  APP_EVENT_DEVICE_ORIENTATION_CHANGED = 3,
  APP_EVENT_REGION_FORMAT_CHANGED = 4,
} app_event_type_e;

/* Runs the main loop; returns 0 when the application ended normally. */
int ui_app_main(int argc, char** argv, ui_app_lifecycle_callback_s* callback, void* user_data);
/* Ends the main loop after the current callback. */
void ui_app_exit(void);
int ui_app_add_event_handler(app_event_handler_h* handler, app_event_type_e event_type, app_event_cb callback,
                             void* user_data);
int ui_app_remove_event_handler(app_event_handler_h handler);

/* Non-zero when the on-screen display is laid out right to left. */
int ui_orientation_get(void);

int ui_assist_init(int flags, int reserved);
void ui_assist_shutdown(void);

#ifdef __cplusplus
}
#endif
