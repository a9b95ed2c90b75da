// The logger library through its three entry points: records in files and on standard error,
// levels and destinations from the environment, counting of logs and stale handles, and many
// threads at once. Each test uses its own log names, so that a failed test disturbs no other.
#include "log_lines.hpp"

#include <corvane_xvr_logger.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <map>
#include <thread>

namespace {

constexpr int error = XVR_LOG_PRIORITY_ERROR;

// New logs write to a fresh file with the given level while the object lives.
struct Log_file {
    explicit Log_file(const char* level_value)
        : path(fresh_log_path("records")),
          destination("CORVANE_XVR_LOG_DESTINATION", ("file:" + path).c_str()),
          level("CORVANE_XVR_LOG_LEVEL", level_value) {}
    std::string path;
    Environment_setting destination, level;
};

// Puts the descriptor in place of standard error; gives back the saved one for restore_stderr.
int redirect_stderr(int descriptor)
{
    const int saved = ::dup(2);
    ::dup2(descriptor, 2);
    ::close(descriptor);
    return saved;
}
void restore_stderr(int saved) { ::dup2(saved, 2), ::close(saved); }

TEST(Logger_to_file, writes_each_accepted_record_as_one_line_with_every_field)
{
    Log_file file("debug");
    const std::string other_path = fresh_log_path("other");
    void* log = xvr_get_log("API_FIELDS", "");
    ASSERT_NE(log, nullptr);
    std::string long_message;
    for (int i = 0; long_message.size() < 70000; ++i) long_message += "segment " + std::to_string(i) + "; ";
    EXPECT_EQ(xvr_log(log, error, "color_processing/color_correction.cpp", 114, "transform",
                      "ERROR:  The input buffer is NULL!"), XVR_LOG_ACCEPTED);
    EXPECT_EQ(xvr_log(log, XVR_LOG_PRIORITY_INFO, nullptr, 0, nullptr, long_message.c_str()), XVR_LOG_ACCEPTED);
    EXPECT_EQ(xvr_log(log, -1, "f.c", 1, "g", "m"), XVR_LOG_INVALID_RECORD);
    EXPECT_EQ(xvr_log(log, error, "f.c", 1, "g", nullptr), XVR_LOG_INVALID_RECORD);
    {
        // A second user of the open log changes nothing: the settings are read at opening only.
        Environment_setting elsewhere("CORVANE_XVR_LOG_DESTINATION", ("file:" + other_path).c_str());
        EXPECT_EQ(xvr_get_log("API_FIELDS", ""), log);
    }
    EXPECT_EQ(xvr_log(log, error, "f.c", 1, "g", "after a second get"), XVR_LOG_ACCEPTED);
    xvr_free_log("API_FIELDS", "");
    xvr_free_log("API_FIELDS", "");
    void* named = xvr_get_log("API_ORIGIN", "camera 2");
    xvr_log(named, error, "f.c", 1, "g", "m");
    xvr_free_log("API_ORIGIN", "camera 2");

    const std::string pid = " [" + std::to_string(::getpid()) + "] ";
    const std::string expected[] = {
        " ERROR API_FIELDS" + pid + "color_processing/color_correction.cpp:114 transform: ERROR:  The input buffer "
                                    "is NULL!",
        " INFO API_FIELDS" + pid + "-:0 -: " + long_message, " ERROR API_FIELDS" + pid + "f.c:1 g: after a second get",
        " ERROR API_ORIGIN/camera 2" + pid + "f.c:1 g: m"};
    const std::vector<std::string> written = read_lines(file.path);
    ASSERT_EQ(written.size(), 4u);
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(std::regex_match(written[i].substr(0, 27), std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z)")))
            << written[i].substr(0, 200);
        EXPECT_EQ(written[i].substr(27), expected[i]) << "record " << i;
    }
    EXPECT_TRUE(read_lines(other_path).empty());
}

TEST(Logger_to_file, keeps_records_up_to_the_requested_level_and_errors_only_by_default)
{
    const struct {
        const char* level;
        std::size_t kept;
    } cases[] = {{nullptr, 1}, {"error", 1}, {"warning", 2}, {"info", 3}, {"debug", 4}, {"2", 3}, {"5", 6}};
    for (const auto& c : cases) {
        const std::string name = c.level ? c.level : "unset";
        Log_file file(c.level);
        void* log = xvr_get_log("API_LEVELS", "");
        for (int priority = 0; priority <= 6; ++priority) {
            EXPECT_EQ(xvr_log(log, priority, "f.c", priority, "g", "r"), XVR_LOG_ACCEPTED)
                << "level " << name << ": a filtered record is accepted too";
        }
        xvr_free_log("API_LEVELS", "");
        const std::vector<std::string> written = read_lines(file.path);
        ASSERT_EQ(written.size(), c.kept) << "level " << name;
        for (std::size_t i = 0; i < c.kept; ++i) EXPECT_EQ(parse_log_line(written[i])->line, int(i)) << name;
    }
}

TEST(Log_names, give_one_handle_per_open_log_and_refuse_stale_null_and_unknown_ones)
{
    Environment_setting destination("CORVANE_XVR_LOG_DESTINATION", "none");
    void* first = xvr_get_log("API_COUNT", "a");
    void* other_secondary = xvr_get_log("API_COUNT", "b");
    void* null_secondary = xvr_get_log("API_COUNT", nullptr);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(xvr_get_log("API_COUNT", "a"), first);
    EXPECT_NE(other_secondary, first);
    EXPECT_EQ(xvr_get_log("API_COUNT", ""), null_secondary) << "a null secondary name means \"\"";
    EXPECT_NE(null_secondary, first);

    xvr_free_log("API_COUNT", "a");  // one user left
    EXPECT_EQ(xvr_log(first, error, "f", 1, "g", "m"), XVR_LOG_ACCEPTED);
    xvr_free_log("API_COUNT", "a");  // closed
    EXPECT_EQ(xvr_log(first, error, "f", 1, "g", "m"), XVR_LOG_UNKNOWN_LOG);
    xvr_free_log("API_COUNT", "a");  // more frees than gets: ignored
    EXPECT_EQ(xvr_log(other_secondary, error, "f", 1, "g", "m"), XVR_LOG_ACCEPTED);
    void* reopened = xvr_get_log("API_COUNT", "a");
    EXPECT_NE(reopened, first) << "a stale handle must not reach the reopened log";
    EXPECT_EQ(xvr_log(first, error, "f", 1, "g", "m"), XVR_LOG_UNKNOWN_LOG);
    xvr_free_log("API_COUNT", "a");
    xvr_free_log("API_COUNT", "b");
    xvr_free_log("API_COUNT", "");
    xvr_free_log("API_COUNT", nullptr);
    EXPECT_EQ(xvr_log(null_secondary, error, "f", 1, "g", "m"), XVR_LOG_UNKNOWN_LOG);

    EXPECT_EQ(xvr_get_log(nullptr, ""), nullptr);
    xvr_free_log(nullptr, nullptr);
    xvr_free_log("API_NEVER_OPENED", "");
    EXPECT_EQ(xvr_log(nullptr, error, "f", 1, "g", "m"), XVR_LOG_UNKNOWN_LOG);
    int not_a_log = 0;
    EXPECT_EQ(xvr_log(&not_a_log, error, "f", 1, "g", "m"), XVR_LOG_UNKNOWN_LOG);
}

TEST(Standard_error, takes_the_records_by_default_and_when_a_setting_cannot_be_used_warned_once)
{
    const struct {
        const char* destination;
        const char* level;
        std::vector<const char*> lines;  // a pattern per line
    } cases[] = {
        {nullptr, nullptr, {" ERROR STDERR_CASE \\[.* f.c:2 g: kept$"}},
        {"file:/nonexistent-directory/records.log", nullptr,
         {" WARNING CORVANE_XVR_LOGGER \\[.*/nonexistent-directory/records\\.log.*No such file or directory",
          " g: kept$"}},
        {"tcp://collector", "chatty",
         {" WARNING CORVANE_XVR_LOGGER \\[.*CORVANE_XVR_LOG_DESTINATION=\"tcp://collector\"",
          " WARNING CORVANE_XVR_LOGGER \\[.*CORVANE_XVR_LOG_LEVEL=\"chatty\"", " g: kept$"}},
    };
    for (const auto& c : cases) {
        Environment_setting destination("CORVANE_XVR_LOG_DESTINATION", c.destination);
        Environment_setting level("CORVANE_XVR_LOG_LEVEL", c.level);
        const std::string path = fresh_log_path("stderr_capture");
        const int saved = redirect_stderr(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644));
        void* log = xvr_get_log("STDERR_CASE", "");
        ASSERT_NE(log, nullptr);
        xvr_get_log("STDERR_CASE", "");  // an open log does not read the settings again
        EXPECT_EQ(xvr_log(log, XVR_LOG_PRIORITY_INFO, "f.c", 1, "g", "below the default"), XVR_LOG_ACCEPTED);
        EXPECT_EQ(xvr_log(log, error, "f.c", 2, "g", "kept"), XVR_LOG_ACCEPTED);
        xvr_free_log("STDERR_CASE", "");
        xvr_free_log("STDERR_CASE", "");
        restore_stderr(saved);
        const std::vector<std::string> written = read_lines(path);
        const std::string name = c.destination ? c.destination : "unset";
        ASSERT_EQ(written.size(), c.lines.size()) << name;
        for (std::size_t i = 0; i < written.size(); ++i) {
            EXPECT_TRUE(parse_log_line(written[i])) << written[i];
            EXPECT_TRUE(std::regex_search(written[i], std::regex(c.lines[i]))) << name << ": " << written[i];
        }
    }
}

// With standard error a pipe that nobody reads, a record fails with XVR_LOG_WRITE_FAILED, and the
// caller's errno and signals stay as they were (child exit 0; else 1, 2 or 3 names the fault).
TEST(Standard_error, that_is_a_broken_pipe_does_not_kill_the_host)
{
    const auto log_into_a_broken_pipe = [] {
        int ends[2];
        if (::pipe(ends) != 0) _exit(9);
        ::close(ends[0]);
        ::dup2(ends[1], 2);
        ::setenv("CORVANE_XVR_LOG_DESTINATION", "stderr", 1);
        void* log = xvr_get_log("BROKEN_PIPE", "");
        errno = 1234;
        if (xvr_log(log, error, "f.c", 1, "g", "nobody reads this") != XVR_LOG_WRITE_FAILED) _exit(1);
        if (errno != 1234) _exit(2);
        sigset_t pending;
        sigpending(&pending);
        _exit(sigismember(&pending, SIGPIPE) ? 3 : 0);
    };
    EXPECT_EXIT(log_into_a_broken_pipe(), ::testing::ExitedWithCode(0), "");
}

// Record r of thread t names both, with a body of up to about 20 KB (beyond a pipe's atomic
// write) whose length and filler depend on them, so a torn or merged line cannot pass for it.
std::string record_text(int thread, int record)
{
    return "thread " + std::to_string(thread) + " record " + std::to_string(record) + " " +
           std::string((thread * 7919 + record * 104729) % 20000, char('a' + (thread + record) % 26));
}

// The lines must be exactly the 150 records of each of 8 threads, each whole, each thread's in order.
void expect_whole_records_from_threads(const std::vector<std::string>& lines, const char* where)
{
    ASSERT_EQ(lines.size(), 8u * 150u) << where;
    std::map<int, int> next_record_of_thread;
    for (const std::string& text : lines) {
        const auto line = parse_log_line(text);
        ASSERT_TRUE(line) << where << ": " << text.substr(0, 200);
        int thread = -1, record = -1;
        ASSERT_EQ(std::sscanf(line->message.c_str(), "thread %d record %d", &thread, &record), 2) << where;
        ASSERT_EQ(line->message, record_text(thread, record)) << where << ": torn record " << thread << "/" << record;
        EXPECT_EQ(line->line, record) << where;
        EXPECT_EQ(record, next_record_of_thread[thread]++) << where << ": thread " << thread;
    }
    EXPECT_EQ(next_record_of_thread.size(), 8u) << where;
}

TEST(Records_from_several_threads, reach_a_file_and_a_standard_error_pipe_as_whole_lines)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const int saved = redirect_stderr(ends[1]);
    std::string received;
    std::thread reader([&received, read_end = ends[0]] {
        char buffer[65536];
        for (ssize_t n; (n = ::read(read_end, buffer, sizeof buffer)) > 0;) received.append(buffer, n);
        ::close(read_end);
    });
    void* to_pipe = nullptr;
    {
        Environment_setting destination("CORVANE_XVR_LOG_DESTINATION", "stderr");
        to_pipe = xvr_get_log("THREADS_PIPE", "");
    }
    Log_file file("error");
    void* to_file = xvr_get_log("THREADS_FILE", "");
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([=, &failures] {
            for (int r = 0; r < 150; ++r) {
                const std::string text = record_text(t, r);
                failures += xvr_log(to_pipe, error, "threads.cpp", r, "write", text.c_str()) != 0;
                failures += xvr_log(to_file, error, "threads.cpp", r, "write", text.c_str()) != 0;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures.load(), 0);
    xvr_free_log("THREADS_FILE", "");
    xvr_free_log("THREADS_PIPE", "");
    restore_stderr(saved);  // the last write end goes, so the reader sees the end
    reader.join();
    expect_whole_records_from_threads(read_lines(file.path), "file");
    std::vector<std::string> lines;
    for (std::size_t begin = 0, end; (end = received.find('\n', begin)) != std::string::npos; begin = end + 1)
        lines.push_back(received.substr(begin, end - begin));
    expect_whole_records_from_threads(lines, "pipe");
}

TEST(Logs_opened_and_closed_while_others_write, refuse_stale_handles_without_harm)
{
    Environment_setting destination("CORVANE_XVR_LOG_DESTINATION", "none");
    std::atomic<void*> current{xvr_get_log("THREADS_CHURN", "")};
    std::atomic<bool> stop{false};
    std::atomic<int> unexpected{0};
    std::thread opener([&] {
        for (int i = 0; i < 2000; ++i) {
            xvr_free_log("THREADS_CHURN", "");
            current = xvr_get_log("THREADS_CHURN", "");
        }
        stop = true;
    });
    std::vector<std::thread> writers;
    for (int t = 0; t < 3; ++t) {
        writers.emplace_back([&] {
            while (!stop) {
                const int result = xvr_log(current.load(), error, "f", 1, "g", "m");
                unexpected += result != XVR_LOG_ACCEPTED && result != XVR_LOG_UNKNOWN_LOG;
            }
        });
    }
    opener.join();
    for (std::thread& writer : writers) writer.join();
    EXPECT_EQ(unexpected.load(), 0);
    xvr_free_log("THREADS_CHURN", "");
    EXPECT_EQ(xvr_log(current.load(), error, "f", 1, "g", "m"), XVR_LOG_UNKNOWN_LOG);
}

}  // namespace
