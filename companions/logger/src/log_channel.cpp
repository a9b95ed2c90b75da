#include "log_channel.hpp"

#include "log_configuration.hpp"
#include "stream_sink.hpp"
#include "syslog_sink.hpp"

#include <corvane_xvr_logger.h>

#include <system_error>
#include <utility>

namespace {

void report_configuration_problem(const std::string& problem)
{
    const Log_record record{XVR_LOG_PRIORITY_WARNING, "libcorvane_xvr_logger.so", 0,
                            "xvr_get_log", problem.c_str()};
    Stream_sink().write("CORVANE_XVR_LOGGER", record);
}

std::unique_ptr<Log_sink> make_file_sink(const std::string& path)
{
    try {
        return std::make_unique<Stream_sink>(path);
    } catch (const std::system_error& error) {
        report_configuration_problem("cannot open the log file " + path + " (" +
                                     error.code().message() + "); records go to standard error");
        return std::make_unique<Stream_sink>();
    }
}

std::unique_ptr<Log_sink> make_sink(const Log_configuration& configuration)
{
    switch (configuration.destination) {
    case Log_destination::file: return make_file_sink(configuration.file_path);
    case Log_destination::syslog: return std::make_unique<Syslog_sink>();
    case Log_destination::none: return std::make_unique<Discarding_sink>();
    case Log_destination::standard_error: break;
    }
    return std::make_unique<Stream_sink>();
}

}  // namespace

Log_channel::Log_channel(std::string origin, int maximum_priority, std::unique_ptr<Log_sink> sink)
    : m_origin(std::move(origin)), m_maximum_priority(maximum_priority), m_sink(std::move(sink))
{
}

int Log_channel::write(const Log_record& record) const
{
    if (record.priority > m_maximum_priority) return XVR_LOG_ACCEPTED;
    return m_sink->write(m_origin, record) ? XVR_LOG_ACCEPTED : XVR_LOG_WRITE_FAILED;
}

std::string log_origin(const std::string& module_name, const std::string& secondary_name)
{
    return secondary_name.empty() ? module_name : module_name + "/" + secondary_name;
}

std::shared_ptr<const Log_channel> open_log_channel(const std::string& module_name,
                                                    const std::string& secondary_name)
{
    const Log_configuration configuration = read_log_configuration_from_environment();
    for (const std::string& problem : configuration.problems) report_configuration_problem(problem);
    return std::make_shared<const Log_channel>(log_origin(module_name, secondary_name),
                                               configuration.maximum_priority,
                                               make_sink(configuration));
}
