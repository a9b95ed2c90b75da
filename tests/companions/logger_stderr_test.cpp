// Records on standard error: the default destination, the fallback when the chosen one
// cannot be used, and a standard error whose reader has gone away.
#include "log_lines.hpp"

#include <corvane_xvr_logger.h>

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

// Sends this process's standard error to a file while the object lives.
class Standard_error_capture {
public:
    Standard_error_capture() : m_path(fresh_log_path("stderr_capture")), m_saved(::dup(2))
    {
        const int file = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ::dup2(file, 2);
        ::close(file);
    }
    ~Standard_error_capture() { restore(); }

    std::vector<std::string> lines()
    {
        restore();
        return read_lines(m_path);
    }

private:
    void restore()
    {
        if (m_saved < 0) return;
        ::dup2(m_saved, 2);
        ::close(m_saved);
        m_saved = -1;
    }

    std::string m_path;
    int m_saved;
};

TEST(Standard_error, is_the_destination_when_none_is_chosen)
{
    Environment_setting destination("CORVANE_XVR_LOG_DESTINATION", nullptr);
    Environment_setting level("CORVANE_XVR_LOG_LEVEL", nullptr);
    Standard_error_capture capture;
    void* log = xvr_get_log("STDERR_DEFAULT", "");
    EXPECT_EQ(xvr_log(log, XVR_LOG_PRIORITY_ERROR, "f.c", 3, "g", "to stderr"), XVR_LOG_ACCEPTED);
    EXPECT_EQ(xvr_log(log, XVR_LOG_PRIORITY_INFO, "f.c", 4, "g", "filtered"), XVR_LOG_ACCEPTED);
    xvr_free_log("STDERR_DEFAULT", "");
    const std::vector<std::string> lines = capture.lines();
    ASSERT_EQ(lines.size(), 1u);
    const auto line = parse_log_line(lines[0]);
    ASSERT_TRUE(line) << lines[0];
    EXPECT_EQ(line->origin, "STDERR_DEFAULT");
    EXPECT_EQ(line->message, "to stderr");
}

TEST(Standard_error, takes_the_records_when_the_log_file_cannot_be_opened)
{
    Environment_setting destination("CORVANE_XVR_LOG_DESTINATION",
                                    "file:/nonexistent-directory/records.log");
    Environment_setting level("CORVANE_XVR_LOG_LEVEL", nullptr);
    Standard_error_capture capture;
    void* log = xvr_get_log("STDERR_FALLBACK", "");
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(xvr_log(log, XVR_LOG_PRIORITY_ERROR, "f.c", 3, "g", "still written"), XVR_LOG_ACCEPTED);
    xvr_free_log("STDERR_FALLBACK", "");
    const std::vector<std::string> lines = capture.lines();
    ASSERT_EQ(lines.size(), 2u);
    const auto warning = parse_log_line(lines[0]);
    ASSERT_TRUE(warning) << lines[0];
    EXPECT_EQ(warning->priority, "WARNING");
    EXPECT_EQ(warning->origin, "CORVANE_XVR_LOGGER");
    EXPECT_NE(warning->message.find("/nonexistent-directory/records.log"), std::string::npos);
    EXPECT_NE(warning->message.find("No such file or directory"), std::string::npos);
    EXPECT_EQ(parse_log_line(lines[1])->message, "still written");
}

TEST(Standard_error, hears_once_about_each_setting_not_understood)
{
    Environment_setting destination("CORVANE_XVR_LOG_DESTINATION", "tcp://collector");
    Environment_setting level("CORVANE_XVR_LOG_LEVEL", "chatty");
    Standard_error_capture capture;
    void* log = xvr_get_log("STDERR_PROBLEMS", "");
    xvr_get_log("STDERR_PROBLEMS", "");  // an open log does not read the settings again
    EXPECT_EQ(xvr_log(log, XVR_LOG_PRIORITY_INFO, "f.c", 1, "g", "below the default"), XVR_LOG_ACCEPTED);
    EXPECT_EQ(xvr_log(log, XVR_LOG_PRIORITY_ERROR, "f.c", 2, "g", "kept"), XVR_LOG_ACCEPTED);
    xvr_free_log("STDERR_PROBLEMS", "");
    xvr_free_log("STDERR_PROBLEMS", "");
    const std::vector<std::string> lines = capture.lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_NE(lines[0].find("CORVANE_XVR_LOG_DESTINATION=\"tcp://collector\""), std::string::npos);
    EXPECT_NE(lines[1].find("CORVANE_XVR_LOG_LEVEL=\"chatty\""), std::string::npos);
    EXPECT_EQ(parse_log_line(lines[2])->message, "kept");
}

// With standard error a pipe that nobody reads any more, a record fails with
// XVR_LOG_WRITE_FAILED instead of killing the process with SIGPIPE, and the caller's errno and
// signal state are as before. Child exit codes: 0 as described, 1 wrong result, 2 errno
// changed, 3 a SIGPIPE left pending.
[[noreturn]] void log_into_a_broken_pipe()
{
    int ends[2];
    if (::pipe(ends) != 0) _exit(9);
    ::close(ends[0]);
    ::dup2(ends[1], 2);
    ::close(ends[1]);
    ::setenv("CORVANE_XVR_LOG_DESTINATION", "stderr", 1);
    void* log = xvr_get_log("BROKEN_PIPE", "");
    errno = 1234;
    const int result = xvr_log(log, XVR_LOG_PRIORITY_ERROR, "f.c", 1, "g", "nobody reads this");
    if (result != XVR_LOG_WRITE_FAILED) _exit(1);
    if (errno != 1234) _exit(2);
    sigset_t pending;
    sigpending(&pending);
    if (sigismember(&pending, SIGPIPE)) _exit(3);
    xvr_free_log("BROKEN_PIPE", "");
    _exit(0);
}

TEST(Standard_error, that_is_a_broken_pipe_does_not_kill_the_host)
{
    EXPECT_EXIT(log_into_a_broken_pipe(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
