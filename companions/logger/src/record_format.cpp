#include "record_format.hpp"

#include "log_priority.hpp"

#include <cstdio>
#include <ctime>

namespace {

const char* or_dash(const char* text)
{
    return text != nullptr ? text : "-";
}

void append_escaped_character(std::string& line, unsigned char character)
{
    switch (character) {
    case '\n': line += "\\n"; return;
    case '\r': line += "\\r"; return;
    case '\t': line += "\\t"; return;
    default: {
        char escaped[5];
        std::snprintf(escaped, sizeof escaped, "\\x%02X", character);
        line += escaped;
    }
    }
}

bool is_control_character(unsigned char character)
{
    return character < 0x20 || character == 0x7F;
}

// "origin file:line function: message", the part shared by both forms.
void append_record_body(std::string& line, const std::string& origin, const Log_record& record,
                        const char* between_origin_and_source)
{
    append_escaped(line, origin.c_str());
    line += between_origin_and_source;
    append_escaped(line, or_dash(record.file));
    line += ':';
    line += std::to_string(record.line);
    line += ' ';
    append_escaped(line, or_dash(record.function));
    line += ": ";
    append_escaped(line, record.message);
}

}  // namespace

void append_escaped(std::string& line, const char* text)
{
    for (const char* p = text; *p != '\0'; ++p) {
        const unsigned char character = static_cast<unsigned char>(*p);
        if (is_control_character(character)) {
            append_escaped_character(line, character);
        } else {
            line += static_cast<char>(character);
        }
    }
}

std::string format_utc_time(std::chrono::system_clock::time_point time)
{
    using namespace std::chrono;
    const auto since_epoch = duration_cast<microseconds>(time.time_since_epoch());
    auto seconds_part = duration_cast<seconds>(since_epoch);
    auto micros_part = since_epoch - seconds_part;
    if (micros_part.count() < 0) {  // before 1970: keep the fraction positive
        seconds_part -= seconds(1);
        micros_part += seconds(1);
    }
    const std::time_t whole_seconds = static_cast<std::time_t>(seconds_part.count());
    std::tm utc{};
    gmtime_r(&whole_seconds, &utc);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%06ldZ", utc.tm_year + 1900,
                  utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec,
                  static_cast<long>(micros_part.count()));
    return text;
}

std::string format_record_line(const std::string& origin, const Log_record& record,
                               std::chrono::system_clock::time_point time, pid_t process)
{
    std::string line = format_utc_time(time);
    line += ' ';
    line += priority_name(record.priority);
    line += ' ';
    const std::string process_part = " [" + std::to_string(process) + "] ";
    append_record_body(line, origin, record, process_part.c_str());
    line += '\n';
    return line;
}

std::string format_syslog_text(const std::string& origin, const Log_record& record)
{
    std::string text = priority_name(record.priority);
    text += ' ';
    append_record_body(text, origin, record, " ");
    return text;
}
