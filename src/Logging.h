// The application's log lines: tag "antenna-selection", prefix "file: function(line) > ".
#pragma once

#include <cstring>

#include "Log.h"

#define APP_LOG_TAG "antenna-selection"
#define APP_FILE_NAME (strrchr(__FILE__, '/') ? strrchr(__FILE__, '/') + 1 : __FILE__)

// APP_LOG(LOG_ID_MAIN, DLOG_WARN, "text %d\n", n) writes "Util.cpp: Fn(12) > text 7".
#define APP_LOG(buffer, prio, fmt, ...) \
  __dlog_print((buffer), (prio), APP_LOG_TAG, "%s: %s(%d) > " fmt, APP_FILE_NAME, __func__, __LINE__, ##__VA_ARGS__)

// Shorthands used throughout: trace (main, warning), info (main, info), error (system, warning).
#define LOG_TRACE(fmt, ...) APP_LOG(LOG_ID_MAIN, DLOG_WARN, fmt, ##__VA_ARGS__)
#define LOG_INFO(fmt, ...) APP_LOG(LOG_ID_MAIN, DLOG_INFO, fmt, ##__VA_ARGS__)
#define LOG_ERROR(fmt, ...) APP_LOG(LOG_ID_SYSTEM, DLOG_WARN, fmt, ##__VA_ARGS__)
