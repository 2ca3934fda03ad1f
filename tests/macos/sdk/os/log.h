// The part of the unified log that is used here, declared from its public documentation
// (developer.apple.com/documentation/os/logging). On macOS `os_log_with_type` is a macro.
#pragma once

#include <stdint.h>

typedef struct os_log_s* os_log_t;
typedef uint8_t os_log_type_t;
enum { OS_LOG_TYPE_INFO = 0x01, OS_LOG_TYPE_DEBUG = 0x02, OS_LOG_TYPE_ERROR = 0x10 };

#ifdef __cplusplus
extern "C" {
#endif

os_log_t os_log_create(const char* subsystem, const char* category);
void os_log_with_type(os_log_t log, os_log_type_t type, const char* format, ...)
#ifdef __clang__
    __attribute__((format(os_log, 3, 4)))
#endif
    ;

#ifdef __cplusplus
}
#endif
