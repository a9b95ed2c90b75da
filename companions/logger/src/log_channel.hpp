// An open log: its name as written in each line, the highest priority number it keeps and
// its destination.
#pragma once

#include "log_record.hpp"
#include "log_sink.hpp"

#include <memory>
#include <string>

class Log_channel {
public:
    Log_channel(std::string origin, int maximum_priority, std::unique_ptr<Log_sink> sink);

    // One of the XVR_LOG_ result codes of xvr_log.
    int write(const Log_record& record) const;

    const std::string& origin() const { return m_origin; }
    int maximum_priority() const { return m_maximum_priority; }

private:
    std::string m_origin;
    int m_maximum_priority;
    std::unique_ptr<Log_sink> m_sink;
};

// "module" or "module/secondary".
std::string log_origin(const std::string& module_name, const std::string& secondary_name);

// A channel set up as the environment asks. Settings that cannot be followed are reported on
// standard error and replaced by the defaults. Throws std::bad_alloc only.
std::shared_ptr<const Log_channel> open_log_channel(const std::string& module_name,
                                                    const std::string& secondary_name);
