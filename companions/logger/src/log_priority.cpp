#include "log_priority.hpp"

#include <corvane_xvr_logger.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <strings.h>
#include <syslog.h>

namespace {

struct Named_level {
    const char* name;
    int priority;
};

constexpr Named_level named_levels[] = {
    {"error", XVR_LOG_PRIORITY_ERROR},
    {"warning", XVR_LOG_PRIORITY_WARNING},
    {"info", XVR_LOG_PRIORITY_INFO},
    {"debug", XVR_LOG_PRIORITY_DEBUG},
};

std::optional<int> parse_level_number(const char* text)
{
    if (*text < '0' || *text > '9') return std::nullopt;
    errno = 0;
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    if (*end != '\0' || errno == ERANGE || value > INT_MAX) return std::nullopt;
    return static_cast<int>(value);
}

}  // namespace

const char* priority_name(int priority)
{
    switch (priority) {
    case XVR_LOG_PRIORITY_ERROR: return "ERROR";
    case XVR_LOG_PRIORITY_WARNING: return "WARNING";
    case XVR_LOG_PRIORITY_INFO: return "INFO";
    default: return "DEBUG";
    }
}

std::optional<int> parse_priority_level(const char* text)
{
    if (text == nullptr) return std::nullopt;
    for (const Named_level& level : named_levels) {
        if (strcasecmp(text, level.name) == 0) return level.priority;
    }
    return parse_level_number(text);
}

int syslog_level(int priority)
{
    switch (priority) {
    case XVR_LOG_PRIORITY_ERROR: return LOG_ERR;
    case XVR_LOG_PRIORITY_WARNING: return LOG_WARNING;
    case XVR_LOG_PRIORITY_INFO: return LOG_INFO;
    default: return LOG_DEBUG;
    }
}
