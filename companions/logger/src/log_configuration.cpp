#include "log_configuration.hpp"

#include "log_priority.hpp"

#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace {

constexpr char file_prefix[] = "file:";
constexpr std::size_t file_prefix_length = sizeof file_prefix - 1;

bool is_unset(const char* value)
{
    return value == nullptr || *value == '\0';
}

void apply_destination(const char* value, Log_configuration& configuration)
{
    if (is_unset(value) || strcasecmp(value, "stderr") == 0) {
        configuration.destination = Log_destination::standard_error;
    } else if (strcasecmp(value, "syslog") == 0) {
        configuration.destination = Log_destination::syslog;
    } else if (strcasecmp(value, "none") == 0) {
        configuration.destination = Log_destination::none;
    } else if (std::strncmp(value, file_prefix, file_prefix_length) == 0 &&
               value[file_prefix_length] != '\0') {
        configuration.destination = Log_destination::file;
        configuration.file_path = value + file_prefix_length;
    } else {
        configuration.problems.push_back(
            std::string(destination_variable) + "=\"" + value +
            "\" is not stderr, file:<path>, syslog or none; records go to standard error");
    }
}

void apply_level(const char* value, Log_configuration& configuration)
{
    if (is_unset(value)) return;
    if (const std::optional<int> level = parse_priority_level(value)) {
        configuration.maximum_priority = *level;
    } else {
        configuration.problems.push_back(
            std::string(level_variable) + "=\"" + value +
            "\" is not error, warning, info, debug or a number from 0; only errors are written");
    }
}

}  // namespace

Log_configuration parse_log_configuration(const char* destination_value, const char* level_value)
{
    Log_configuration configuration;
    apply_destination(destination_value, configuration);
    apply_level(level_value, configuration);
    return configuration;
}

Log_configuration read_log_configuration_from_environment()
{
    return parse_log_configuration(std::getenv(destination_variable), std::getenv(level_variable));
}
