// Where a log's records go and which ones are kept, as the environment asks for it.
#pragma once

#include <string>
#include <vector>

enum class Log_destination { standard_error, file, syslog, none };

struct Log_configuration {
    Log_destination destination = Log_destination::standard_error;
    std::string file_path;      // for Log_destination::file
    int maximum_priority = 0;   // records of a higher priority number are dropped
    std::vector<std::string> problems;  // settings that were not understood, one sentence each
};

constexpr const char* destination_variable = "CORVANE_XVR_LOG_DESTINATION";
constexpr const char* level_variable = "CORVANE_XVR_LOG_LEVEL";

// From the two variables' values (null when unset). A value that is not understood leaves
// the default in place and adds a problem.
Log_configuration parse_log_configuration(const char* destination_value, const char* level_value);

Log_configuration read_log_configuration_from_environment();
