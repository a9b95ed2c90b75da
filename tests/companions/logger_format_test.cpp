// The pieces inside the logger library: reading the two environment settings and the text of
// a line.
#include "log_configuration.hpp"
#include "record_format.hpp"

#include <corvane_xvr_logger.h>

#include <gtest/gtest.h>

#include <chrono>

namespace {

TEST(Destination_setting, understands_keywords_in_any_case_and_file_paths_and_reports_the_rest)
{
    using D = Log_destination;
    const struct {
        const char* value;
        D destination;
        const char* path;
        bool problem;
    } cases[] = {{nullptr, D::standard_error, "", false}, {"", D::standard_error, "", false},
                 {"stderr", D::standard_error, "", false}, {"SysLog", D::syslog, "", false},
                 {"NONE", D::none, "", false}, {"file:/var/log/x y:z.log", D::file, "/var/log/x y:z.log", false},
                 {"file:", D::standard_error, "", true}, {"File:/tmp/x", D::standard_error, "", true},
                 {"/tmp/x.log", D::standard_error, "", true}, {"stderr ", D::standard_error, "", true},
                 {"journal", D::standard_error, "", true}};
    for (const auto& c : cases) {
        const std::string name = c.value ? std::string("\"") + c.value + "\"" : "unset";
        const Log_configuration configuration = parse_log_configuration(c.value, nullptr);
        EXPECT_EQ(configuration.destination, c.destination) << name;
        EXPECT_EQ(configuration.file_path, c.path) << name;
        ASSERT_EQ(configuration.problems.size(), c.problem ? 1u : 0u) << name;
        if (c.problem) {
            EXPECT_NE(configuration.problems[0].find("CORVANE_XVR_LOG_DESTINATION=" + name),
                      std::string::npos) << configuration.problems[0];
        }
    }
}

TEST(Level_setting, accepts_names_in_any_case_and_numbers_and_reports_the_rest)
{
    const struct {
        const char* value;
        int maximum;
        bool problem;
    } cases[] = {{nullptr, 0, false}, {"", 0, false}, {"error", 0, false}, {"Warning", 1, false},
                 {"INFO", 2, false}, {"debug", 3, false}, {"0", 0, false}, {"7", 7, false},
                 {"2147483647", 2147483647, false}, {"-1", 0, true}, {"2x", 0, true}, {"+2", 0, true},
                 {" 2", 0, true}, {"inf", 0, true}, {"verbose", 0, true}, {"2147483648", 0, true},
                 {"99999999999", 0, true}};
    for (const auto& c : cases) {
        const std::string name = c.value ? std::string("\"") + c.value + "\"" : "unset";
        const Log_configuration configuration = parse_log_configuration(nullptr, c.value);
        EXPECT_EQ(configuration.maximum_priority, c.maximum) << name;
        ASSERT_EQ(configuration.problems.size(), c.problem ? 1u : 0u) << name;
        if (c.problem) {
            EXPECT_NE(configuration.problems[0].find("CORVANE_XVR_LOG_LEVEL=" + name), std::string::npos);
        }
    }
}

std::chrono::system_clock::time_point at_microseconds(long long since_epoch)
{
    return std::chrono::system_clock::time_point(std::chrono::microseconds(since_epoch));
}

TEST(Timestamps, are_utc_with_microseconds)
{
    // 1700000000 s is 2023-11-14 22:13:20 UTC; 951782400 s is 2000-02-29 00:00:00 UTC.
    EXPECT_EQ(format_utc_time(at_microseconds(1700000000LL * 1000000 + 123456)), "2023-11-14T22:13:20.123456Z");
    EXPECT_EQ(format_utc_time(at_microseconds(0)), "1970-01-01T00:00:00.000000Z");
    EXPECT_EQ(format_utc_time(at_microseconds(951782400LL * 1000000 + 999999)), "2000-02-29T00:00:00.999999Z");
}

// The fields in order are checked on the records the library writes to a file.
TEST(Record_line, escapes_control_characters_in_every_field)
{
    const Log_record awkward{XVR_LOG_PRIORITY_WARNING, "a\nb.cpp", 1, "f\r",
                             "two\nlines\ttab\x01\x7f end \xc3\xa9"};
    EXPECT_EQ(format_record_line("MOD\n", awkward, at_microseconds(0), 1),
              "1970-01-01T00:00:00.000000Z WARNING MOD\\n [1] a\\nb.cpp:1 f\\r: "
              "two\\nlines\\ttab\\x01\\x7F end \xc3\xa9\n");
    // Syslog adds time and process itself.
    const Log_record debug{XVR_LOG_PRIORITY_DEBUG + 4, "f.c", 7, "g", "text\n"};
    EXPECT_EQ(format_syslog_text("MOD/sub", debug), "DEBUG MOD/sub f.c:7 g: text\\n");
}

}  // namespace
