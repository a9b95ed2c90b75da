// The pieces inside the logger library: reading the two environment settings and the text of
// a line.
#include "log_configuration.hpp"
#include "record_format.hpp"

#include <corvane_xvr_logger.h>

#include <gtest/gtest.h>

#include <chrono>

namespace {

TEST(Destination_setting, defaults_to_standard_error_when_unset_or_empty)
{
    for (const char* value : {static_cast<const char*>(nullptr), ""}) {
        const Log_configuration configuration = parse_log_configuration(value, nullptr);
        EXPECT_EQ(configuration.destination, Log_destination::standard_error);
        EXPECT_TRUE(configuration.problems.empty());
    }
}

TEST(Destination_setting, understands_each_keyword_in_any_case_and_a_file_path)
{
    EXPECT_EQ(parse_log_configuration("stderr", nullptr).destination, Log_destination::standard_error);
    EXPECT_EQ(parse_log_configuration("SysLog", nullptr).destination, Log_destination::syslog);
    EXPECT_EQ(parse_log_configuration("NONE", nullptr).destination, Log_destination::none);
    const Log_configuration file = parse_log_configuration("file:/var/log/x y:z.log", nullptr);
    EXPECT_EQ(file.destination, Log_destination::file);
    EXPECT_EQ(file.file_path, "/var/log/x y:z.log");
    EXPECT_TRUE(file.problems.empty());
}

TEST(Destination_setting, reports_what_it_cannot_use_and_keeps_standard_error)
{
    for (const char* value : {"file:", "File:/tmp/x", "/tmp/x.log", "stderr ", "journal"}) {
        const Log_configuration configuration = parse_log_configuration(value, nullptr);
        EXPECT_EQ(configuration.destination, Log_destination::standard_error) << value;
        ASSERT_EQ(configuration.problems.size(), 1u) << value;
        EXPECT_NE(configuration.problems[0].find(std::string("\"") + value + "\""), std::string::npos)
            << configuration.problems[0];
        EXPECT_NE(configuration.problems[0].find("CORVANE_XVR_LOG_DESTINATION"), std::string::npos);
    }
}

TEST(Level_setting, keeps_errors_only_by_default)
{
    EXPECT_EQ(parse_log_configuration(nullptr, nullptr).maximum_priority, XVR_LOG_PRIORITY_ERROR);
    EXPECT_EQ(parse_log_configuration(nullptr, "").maximum_priority, XVR_LOG_PRIORITY_ERROR);
}

TEST(Level_setting, accepts_names_in_any_case_and_numbers)
{
    EXPECT_EQ(parse_log_configuration(nullptr, "error").maximum_priority, 0);
    EXPECT_EQ(parse_log_configuration(nullptr, "Warning").maximum_priority, 1);
    EXPECT_EQ(parse_log_configuration(nullptr, "INFO").maximum_priority, 2);
    EXPECT_EQ(parse_log_configuration(nullptr, "debug").maximum_priority, 3);
    EXPECT_EQ(parse_log_configuration(nullptr, "0").maximum_priority, 0);
    EXPECT_EQ(parse_log_configuration(nullptr, "7").maximum_priority, 7);
    EXPECT_EQ(parse_log_configuration(nullptr, "2147483647").maximum_priority, 2147483647);
}

TEST(Level_setting, reports_what_it_cannot_use_and_keeps_errors_only)
{
    for (const char* value : {"-1", "2x", "+2", " 2", "inf", "verbose", "2147483648", "99999999999"}) {
        const Log_configuration configuration = parse_log_configuration(nullptr, value);
        EXPECT_EQ(configuration.maximum_priority, XVR_LOG_PRIORITY_ERROR) << value;
        ASSERT_EQ(configuration.problems.size(), 1u) << value;
        EXPECT_NE(configuration.problems[0].find("CORVANE_XVR_LOG_LEVEL"), std::string::npos);
    }
}

std::chrono::system_clock::time_point at_microseconds(long long since_epoch)
{
    return std::chrono::system_clock::time_point(std::chrono::microseconds(since_epoch));
}

TEST(Timestamps, are_utc_with_microseconds)
{
    // 1700000000 s is 2023-11-14 22:13:20 UTC.
    EXPECT_EQ(format_utc_time(at_microseconds(1700000000LL * 1000000 + 123456)),
              "2023-11-14T22:13:20.123456Z");
    EXPECT_EQ(format_utc_time(at_microseconds(0)), "1970-01-01T00:00:00.000000Z");
    EXPECT_EQ(format_utc_time(at_microseconds(951782400LL * 1000000 + 999999)),
              "2000-02-29T00:00:00.999999Z");
}

TEST(Record_line, carries_every_field_in_order)
{
    const Log_record record{XVR_LOG_PRIORITY_INFO, "color_processing/color_correction.cpp", 114,
                            "transform", "ERROR:  The specified input buffer is NULL!"};
    EXPECT_EQ(format_record_line("CORVANE_XVR_COLOR_PROCESSING", record,
                                 at_microseconds(1700000000LL * 1000000 + 5), 4242),
              "2023-11-14T22:13:20.000005Z INFO CORVANE_XVR_COLOR_PROCESSING [4242] "
              "color_processing/color_correction.cpp:114 transform: "
              "ERROR:  The specified input buffer is NULL!\n");
}

TEST(Record_line, stays_on_one_line_whatever_the_texts_hold)
{
    const Log_record record{XVR_LOG_PRIORITY_WARNING, "a\nb.cpp", 1, "f\r",
                            "two\nlines\ttab\x01\x7f end \xc3\xa9"};
    const std::string line = format_record_line("MOD\n", record, at_microseconds(0), 1);
    EXPECT_EQ(line, "1970-01-01T00:00:00.000000Z WARNING MOD\\n [1] a\\nb.cpp:1 f\\r: "
                    "two\\nlines\\ttab\\x01\\x7F end \xc3\xa9\n");
}

TEST(Syslog_text, leaves_time_and_process_to_syslog)
{
    const Log_record record{XVR_LOG_PRIORITY_DEBUG + 4, "f.c", 7, "g", "text\n"};
    EXPECT_EQ(format_syslog_text("MOD/sub", record), "DEBUG MOD/sub f.c:7 g: text\\n");
}

}  // namespace
