#include "syslog_sink.hpp"

#include "log_priority.hpp"
#include "record_format.hpp"

#include <cerrno>
#include <syslog.h>

bool Syslog_sink::write(const std::string& origin, const Log_record& record)
{
    const int saved_errno = errno;
    const std::string text = format_syslog_text(origin, record);
    syslog(LOG_USER | syslog_level(record.priority), "%s", text.c_str());
    errno = saved_errno;
    // syslog(3) tells nothing about delivery; what it could not send is lost silently.
    return true;
}
