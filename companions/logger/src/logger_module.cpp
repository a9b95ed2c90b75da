// The exported entry points. None of them lets an exception out: the callers are C and the
// colour-processing library, which treats the logger as optional.
#include <corvane_xvr_logger.h>

#include "log_registry.hpp"

#include <new>

namespace {

alignas(Log_registry) unsigned char registry_storage[sizeof(Log_registry)];

// Never destroyed: the colour-processing library frees its log from an exit-time destructor
// of its own, which runs after the static destructors of this library, loaded later, have run.
// Once every log is freed the registry holds no memory, so nothing leaks when the library is
// unloaded.
Log_registry& registry()
{
    static Log_registry* const logs = new (registry_storage) Log_registry;
    return *logs;
}

bool is_valid_record(int priority, const char* message)
{
    return priority >= 0 && message != nullptr;
}

}  // namespace

extern "C" {

XVR_LOG_API void* xvr_get_log(const char* module_name, const char* secondary_name)
{
    if (module_name == nullptr) return nullptr;
    try {
        return registry().acquire(module_name, secondary_name != nullptr ? secondary_name : "");
    } catch (...) {
        return nullptr;
    }
}

XVR_LOG_API int xvr_log(void* log, int priority, const char* file, int line, const char* function,
                        const char* message)
{
    try {
        const std::shared_ptr<const Log_channel> channel = registry().find(log);
        if (channel == nullptr) return XVR_LOG_UNKNOWN_LOG;
        if (!is_valid_record(priority, message)) return XVR_LOG_INVALID_RECORD;
        return channel->write(Log_record{priority, file, line, function, message});
    } catch (...) {
        return XVR_LOG_WRITE_FAILED;
    }
}

XVR_LOG_API void xvr_free_log(const char* module_name, const char* secondary_name)
{
    if (module_name == nullptr) return;
    try {
        registry().release(module_name, secondary_name != nullptr ? secondary_name : "");
    } catch (...) {
        // Only the strings of the names can fail to be made; the log then stays open.
    }
}

}
