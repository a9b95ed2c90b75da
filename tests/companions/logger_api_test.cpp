// The logger library through its three entry points, with records written to files: opening
// and counting logs, filtering by level, refused records and handles, and settings that the
// library cannot follow.
#include "log_lines.hpp"

#include <corvane_xvr_logger.h>

#include <gtest/gtest.h>

#include <string>
#include <unistd.h>

namespace {

// Points new logs at a fresh file with the given level; each test uses its own module name so
// that logs left open by a failed test do not disturb the next.
class Logger_to_file : public ::testing::Test {
protected:
    void use_file(const char* level)
    {
        m_path = fresh_log_path("records");
        m_destination.emplace("CORVANE_XVR_LOG_DESTINATION", ("file:" + m_path).c_str());
        m_level.emplace("CORVANE_XVR_LOG_LEVEL", level);
    }

    std::vector<std::string> lines() const { return read_lines(m_path); }

    std::string m_path;
    std::optional<Environment_setting> m_destination;
    std::optional<Environment_setting> m_level;
};

TEST_F(Logger_to_file, writes_one_parsable_line_per_record)
{
    use_file("debug");
    void* log = xvr_get_log("API_FIELDS", "");
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(xvr_log(log, XVR_LOG_PRIORITY_ERROR, "color_processing/color_correction.cpp", 114,
                      "transform", "ERROR:  The specified input buffer is NULL!"),
              XVR_LOG_ACCEPTED);
    EXPECT_EQ(xvr_log(log, XVR_LOG_PRIORITY_INFO, nullptr, 0, nullptr, "no source"),
              XVR_LOG_ACCEPTED);
    xvr_free_log("API_FIELDS", "");

    const std::vector<std::string> written = lines();
    ASSERT_EQ(written.size(), 2u);
    const auto error = parse_log_line(written[0]);
    ASSERT_TRUE(error) << written[0];
    EXPECT_EQ(error->priority, "ERROR");
    EXPECT_EQ(error->origin, "API_FIELDS");
    EXPECT_EQ(error->process, ::getpid());
    EXPECT_EQ(error->file, "color_processing/color_correction.cpp");
    EXPECT_EQ(error->line, 114);
    EXPECT_EQ(error->function, "transform");
    EXPECT_EQ(error->message, "ERROR:  The specified input buffer is NULL!");
    const auto info = parse_log_line(written[1]);
    ASSERT_TRUE(info) << written[1];
    EXPECT_EQ(info->priority, "INFO");
    EXPECT_EQ(info->file, "-");
    EXPECT_EQ(info->function, "-");
}

TEST_F(Logger_to_file, names_a_log_with_a_secondary_name_by_both)
{
    use_file("error");
    void* log = xvr_get_log("API_ORIGIN", "camera 2");
    ASSERT_NE(log, nullptr);
    xvr_log(log, XVR_LOG_PRIORITY_ERROR, "f.c", 1, "g", "m");
    xvr_free_log("API_ORIGIN", "camera 2");
    const std::vector<std::string> written = lines();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_NE(written[0].find(" ERROR API_ORIGIN/camera 2 ["), std::string::npos) << written[0];
}

TEST_F(Logger_to_file, keeps_errors_only_by_default)
{
    use_file(nullptr);
    void* log = xvr_get_log("API_DEFAULT_LEVEL", "");
    for (int priority = 0; priority <= 5; ++priority) {
        EXPECT_EQ(xvr_log(log, priority, "f.c", priority, "g", "record"), XVR_LOG_ACCEPTED)
            << "a filtered record is still accepted";
    }
    xvr_free_log("API_DEFAULT_LEVEL", "");
    const std::vector<std::string> written = lines();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(parse_log_line(written[0])->priority, "ERROR");
}

TEST_F(Logger_to_file, keeps_records_up_to_the_requested_level)
{
    const struct {
        const char* level;
        std::size_t kept;
    } cases[] = {{"error", 1}, {"warning", 2}, {"info", 3}, {"debug", 4}, {"2", 3}, {"5", 6}};
    for (const auto& c : cases) {
        use_file(c.level);
        void* log = xvr_get_log("API_LEVELS", "");
        for (int priority = 0; priority <= 6; ++priority) xvr_log(log, priority, "f.c", 1, "g", "r");
        xvr_free_log("API_LEVELS", "");
        EXPECT_EQ(lines().size(), c.kept) << "level " << c.level;
    }
}

TEST_F(Logger_to_file, delivers_a_long_record_whole)
{
    use_file("error");
    std::string message;
    for (int i = 0; message.size() < 70000; ++i) message += "segment " + std::to_string(i) + "; ";
    void* log = xvr_get_log("API_LONG", "");
    EXPECT_EQ(xvr_log(log, XVR_LOG_PRIORITY_ERROR, "f.c", 1, "g", message.c_str()), XVR_LOG_ACCEPTED);
    xvr_free_log("API_LONG", "");
    const std::vector<std::string> written = lines();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(parse_log_line(written[0])->message, message);
}

TEST_F(Logger_to_file, refuses_a_negative_priority_or_a_null_message_and_writes_nothing)
{
    use_file("debug");
    void* log = xvr_get_log("API_INVALID", "");
    EXPECT_EQ(xvr_log(log, -1, "f.c", 1, "g", "m"), XVR_LOG_INVALID_RECORD);
    EXPECT_EQ(xvr_log(log, XVR_LOG_PRIORITY_ERROR, "f.c", 1, "g", nullptr), XVR_LOG_INVALID_RECORD);
    xvr_free_log("API_INVALID", "");
    EXPECT_TRUE(lines().empty());
}

TEST(Log_names, give_the_same_handle_while_the_log_is_open_and_a_new_one_after)
{
    Environment_setting destination("CORVANE_XVR_LOG_DESTINATION", "none");
    void* first = xvr_get_log("API_COUNT", "a");
    void* again = xvr_get_log("API_COUNT", "a");
    void* other_secondary = xvr_get_log("API_COUNT", "b");
    void* null_secondary = xvr_get_log("API_COUNT", nullptr);
    void* empty_secondary = xvr_get_log("API_COUNT", "");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(again, first);
    EXPECT_NE(other_secondary, first);
    EXPECT_EQ(null_secondary, empty_secondary) << "a null secondary name means \"\"";
    EXPECT_NE(null_secondary, first);

    xvr_free_log("API_COUNT", "a");  // one user left
    EXPECT_EQ(xvr_log(first, XVR_LOG_PRIORITY_ERROR, "f", 1, "g", "m"), XVR_LOG_ACCEPTED);
    xvr_free_log("API_COUNT", "a");  // closed
    EXPECT_EQ(xvr_log(first, XVR_LOG_PRIORITY_ERROR, "f", 1, "g", "m"), XVR_LOG_UNKNOWN_LOG);
    xvr_free_log("API_COUNT", "a");  // more frees than gets: ignored
    EXPECT_EQ(xvr_log(other_secondary, XVR_LOG_PRIORITY_ERROR, "f", 1, "g", "m"), XVR_LOG_ACCEPTED);

    void* reopened = xvr_get_log("API_COUNT", "a");
    EXPECT_NE(reopened, first) << "a stale handle must not reach the reopened log";
    EXPECT_EQ(xvr_log(first, XVR_LOG_PRIORITY_ERROR, "f", 1, "g", "m"), XVR_LOG_UNKNOWN_LOG);

    xvr_free_log("API_COUNT", "a");
    xvr_free_log("API_COUNT", "b");
    xvr_free_log("API_COUNT", "");
    xvr_free_log("API_COUNT", nullptr);
    EXPECT_EQ(xvr_log(null_secondary, XVR_LOG_PRIORITY_ERROR, "f", 1, "g", "m"), XVR_LOG_UNKNOWN_LOG);
}

TEST(Log_names, that_are_null_or_unknown_are_refused_or_ignored)
{
    EXPECT_EQ(xvr_get_log(nullptr, ""), nullptr);
    EXPECT_EQ(xvr_get_log(nullptr, nullptr), nullptr);
    xvr_free_log(nullptr, nullptr);
    xvr_free_log("API_NEVER_OPENED", "");
    EXPECT_EQ(xvr_log(nullptr, XVR_LOG_PRIORITY_ERROR, "f", 1, "g", "m"), XVR_LOG_UNKNOWN_LOG);
    int not_a_log = 0;
    EXPECT_EQ(xvr_log(&not_a_log, XVR_LOG_PRIORITY_ERROR, "f", 1, "g", "m"), XVR_LOG_UNKNOWN_LOG);
}

TEST(Log_settings, are_read_when_a_log_is_opened)
{
    const std::string first_path = fresh_log_path("settings_first");
    const std::string second_path = fresh_log_path("settings_second");
    Environment_setting level("CORVANE_XVR_LOG_LEVEL", "error");
    void* log = nullptr;
    {
        Environment_setting destination("CORVANE_XVR_LOG_DESTINATION", ("file:" + first_path).c_str());
        log = xvr_get_log("API_SETTINGS", "");
    }
    {
        // A second user of the open log changes nothing: the log keeps its file.
        Environment_setting destination("CORVANE_XVR_LOG_DESTINATION", ("file:" + second_path).c_str());
        EXPECT_EQ(xvr_get_log("API_SETTINGS", ""), log);
    }
    xvr_log(log, XVR_LOG_PRIORITY_ERROR, "f", 1, "g", "m");
    xvr_free_log("API_SETTINGS", "");
    xvr_free_log("API_SETTINGS", "");
    EXPECT_EQ(read_lines(first_path).size(), 1u);
    EXPECT_TRUE(read_lines(second_path).empty());
}

}  // namespace
