/* The platform log service. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
  LOG_ID_MAIN = 0,
  LOG_ID_RADIO = 1,
  LOG_ID_SYSTEM = 2,
  LOG_ID_APPS = 3,
} log_id_t;

typedef enum {
  DLOG_VERBOSE = 2,
  DLOG_DEBUG = 3,
  DLOG_INFO = 4,
  DLOG_WARN = 5,
  DLOG_ERROR = 6,
  DLOG_FATAL = 7,
} log_priority;

int __dlog_print(log_id_t log_id, int prio, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 4, 5)));

#ifdef __cplusplus
}
#endif
