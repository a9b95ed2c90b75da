/*
 * corvane_xvr_logger.h - public interface of libcorvane_xvr_logger.so, the logging library of
 * the corvane_xvr family.
 *
 * A log is named by a module name and a secondary name. xvr_get_log opens it (or counts one
 * more user of an open one) and returns its handle; xvr_free_log, given the same two names,
 * counts one user less and closes the log when none is left. xvr_log writes one record.
 *
 * Each record becomes one line, written whole (lines of different threads never mix):
 *
 *   2025-01-31T12:00:00.123456Z INFO MODULE[/secondary] [pid] file:line function: text
 *
 * The time is UTC. Control characters in the texts are written escaped (\n, \r, \xHH), so a
 * record never spans two lines.
 *
 * Where records go and which are kept is read from the environment when a log is opened:
 *   CORVANE_XVR_LOG_DESTINATION  stderr (default) | file:/path/to/file (appended) | syslog | none
 *   CORVANE_XVR_LOG_LEVEL        error (default) | warning | info | debug | a number n >= 0
 * A record is written when its priority number is at most the level's number. A value that
 * cannot be understood, or a file that cannot be opened, is reported once on standard error and
 * the default is used instead.
 *
 * The header compiles as C99 and as C++; no function throws. All calls are thread-safe.
 */
#ifndef CORVANE_XVR_LOGGER_H
#define CORVANE_XVR_LOGGER_H

#if defined(__GNUC__)
#define XVR_LOG_API __attribute__((visibility("default")))
#else
#define XVR_LOG_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Record priorities: the lower the number, the more severe. Numbers above
 * XVR_LOG_PRIORITY_DEBUG are accepted and named DEBUG as well. */
typedef enum XVR_LOG_PRIORITY {
    XVR_LOG_PRIORITY_ERROR = 0,
    XVR_LOG_PRIORITY_WARNING = 1,
    XVR_LOG_PRIORITY_INFO = 2,
    XVR_LOG_PRIORITY_DEBUG = 3
} XVR_LOG_PRIORITY;

/* Results of xvr_log. A record below the configured level is accepted (0) and not written. */
enum {
    XVR_LOG_ACCEPTED = 0,
    XVR_LOG_UNKNOWN_LOG = 1,      /* null handle, or a log already closed by xvr_free_log */
    XVR_LOG_INVALID_RECORD = 2,   /* negative priority or null message; nothing written */
    XVR_LOG_WRITE_FAILED = 3      /* the destination refused the line, or memory ran out */
};

/* Opens the log named (module_name, secondary_name) or adds a user to it. A null
 * secondary_name means "". Returns null for a null module_name or when memory runs out.
 * The same names give the same handle for as long as the log stays open. */
XVR_LOG_API void* xvr_get_log(const char* module_name, const char* secondary_name);

/* Writes one record to the log. file and function may be null (written as "-"). */
XVR_LOG_API int xvr_log(void* log, int priority, const char* file, int line, const char* function,
                        const char* message);

/* Removes one user of the log named (module_name, secondary_name) and closes it when the last
 * one is gone; its handle is then refused by xvr_log. Names of a log that is not open are
 * ignored. */
XVR_LOG_API void xvr_free_log(const char* module_name, const char* secondary_name);

#ifdef __cplusplus
}
#endif

#endif /* CORVANE_XVR_LOGGER_H */
