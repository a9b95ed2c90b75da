// Records sent to the system log with syslog(3), facility LOG_USER. openlog is left to the
// host, so its own identity and options are kept.
#pragma once

#include "log_sink.hpp"

class Syslog_sink final : public Log_sink {
public:
    bool write(const std::string& origin, const Log_record& record) override;
};
