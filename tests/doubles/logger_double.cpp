// Stand-in for "libcorvane_xvr_logger.so": records every record and every get/free call in the
// probe. Settings (probe keys):
//   logger.get_log_returns_null  xvr_get_log hands out no log
//   logger.get_log_throws        xvr_get_log throws std::runtime_error
//   logger.free_log_throws       xvr_free_log throws std::runtime_error
// Built in variants that lack xvr_log (NQ_WITHOUT_XVR_LOG) or xvr_get_log
// (NQ_WITHOUT_XVR_GET_LOG).
#include "companion_probe.hpp"

#include <corvane_xvr_logger.h>

#include <stdexcept>

namespace {

int the_log;  // its address is the one log handle this double hands out

const Probe_load_announcer announcer("logger");

}  // namespace

extern "C" {

#ifndef NQ_WITHOUT_XVR_GET_LOG
void* xvr_get_log(const char* module_name, const char* secondary_name)
{
    nq_probe_event("logger.get_log %s|%s", module_name, secondary_name);
    if (nq_probe_setting("logger.get_log_throws", 0)) throw std::runtime_error("no log today");
    if (nq_probe_setting("logger.get_log_returns_null", 0)) return nullptr;
    return &the_log;
}
#endif

#ifndef NQ_WITHOUT_XVR_LOG
int xvr_log(void* log, int priority, const char* file, int line, const char* function,
            const char* message)
{
    if (log != &the_log) nq_probe_event("logger.log with a foreign handle");
    nq_probe_add_log_record({priority, file, line, function, message});
    return 0;
}
#endif

void xvr_free_log(const char* module_name, const char* secondary_name)
{
    nq_probe_event("logger.free_log %s|%s", module_name, secondary_name);
    if (nq_probe_setting("logger.free_log_throws", 0)) throw std::runtime_error("log is busy");
}

}  // extern "C"
