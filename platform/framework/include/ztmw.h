// Debug log and fault reports of the validation daemon. Stand-in for the header of the device's
// framework library.
#ifndef ZTMW_H
#define ZTMW_H

#include <stdarg.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Handle of the daemon's configuration-validation log; null while that log is off.
void* get_config_vald_log_handle(void);

/// Writes one debug record; printf format.
void ztmw_vlog_debug(void* handle, const char* fmt, va_list args);

/// Reports a fault of the software. Returns: whether it is logged or raised is the daemon's
/// business.
/// @param level  0 and up
void ztmw_gen_fault(int level, const char* function, const char* file, int line,
                    const char* message);

#ifdef __cplusplus
}
#endif

#endif  // ZTMW_H
