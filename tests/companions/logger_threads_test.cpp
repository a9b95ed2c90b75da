// Many threads writing records at once, some longer than a pipe's atomic write: every record
// arrives as one whole line. And logs opened and closed while other threads write to them.
#include "log_lines.hpp"

#include <corvane_xvr_logger.h>

#include <gtest/gtest.h>

#include <atomic>
#include <fcntl.h>
#include <map>
#include <thread>
#include <unistd.h>

namespace {

constexpr int thread_count = 8;
constexpr int records_per_thread = 150;

// The text of record r of thread t: a header naming both and a body whose length and filler
// depend on them, up to about 20 KB, so that a torn or merged line cannot pass for a record.
std::string record_text(int thread, int record)
{
    const std::size_t body_length = static_cast<std::size_t>((thread * 7919 + record * 104729) % 20000);
    const char filler = static_cast<char>('a' + (thread + record) % 26);
    return "thread " + std::to_string(thread) + " record " + std::to_string(record) + " " +
           std::string(body_length, filler);
}

void write_records(void* log, int thread, std::atomic<int>& failures)
{
    for (int record = 0; record < records_per_thread; ++record) {
        const std::string text = record_text(thread, record);
        if (xvr_log(log, XVR_LOG_PRIORITY_ERROR, "threads.cpp", record, "write_records",
                    text.c_str()) != XVR_LOG_ACCEPTED)
            ++failures;
    }
}

// Checks that `lines` are exactly the records of all threads, each whole, each thread's in the
// order written.
void expect_every_record_whole(const std::vector<std::string>& lines)
{
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(thread_count * records_per_thread));
    std::map<int, int> next_record_of_thread;
    for (const std::string& text : lines) {
        const auto line = parse_log_line(text);
        ASSERT_TRUE(line) << text.substr(0, 200);
        int thread = -1;
        int record = -1;
        ASSERT_EQ(std::sscanf(line->message.c_str(), "thread %d record %d", &thread, &record), 2);
        ASSERT_EQ(line->message, record_text(thread, record)) << "torn record " << thread << "/" << record;
        EXPECT_EQ(line->line, record);
        EXPECT_EQ(record, next_record_of_thread[thread]++) << "thread " << thread;
    }
    EXPECT_EQ(next_record_of_thread.size(), static_cast<std::size_t>(thread_count));
}

void write_from_all_threads(void* log)
{
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < thread_count; ++t) {
        threads.emplace_back([log, t, &failures] { write_records(log, t, failures); });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures.load(), 0);
}

TEST(Records_from_several_threads, reach_a_file_as_whole_lines)
{
    const std::string path = fresh_log_path("threads_file");
    Environment_setting destination("CORVANE_XVR_LOG_DESTINATION", ("file:" + path).c_str());
    void* log = xvr_get_log("THREADS_FILE", "");
    write_from_all_threads(log);
    xvr_free_log("THREADS_FILE", "");
    expect_every_record_whole(read_lines(path));
}

TEST(Records_from_several_threads, reach_a_standard_error_pipe_as_whole_lines)
{
    Environment_setting destination("CORVANE_XVR_LOG_DESTINATION", "stderr");
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const int saved = ::dup(2);
    ::dup2(ends[1], 2);
    ::close(ends[1]);
    std::string received;
    std::thread reader([&received, read_end = ends[0]] {
        char buffer[65536];
        for (ssize_t n; (n = ::read(read_end, buffer, sizeof buffer)) > 0;) received.append(buffer, n);
    });

    void* log = xvr_get_log("THREADS_PIPE", "");
    write_from_all_threads(log);
    xvr_free_log("THREADS_PIPE", "");
    ::dup2(saved, 2);  // the last write end goes, so the reader sees the end
    ::close(saved);
    reader.join();
    ::close(ends[0]);

    std::vector<std::string> lines;
    for (std::size_t begin = 0, end; (end = received.find('\n', begin)) != std::string::npos; begin = end + 1)
        lines.push_back(received.substr(begin, end - begin));
    expect_every_record_whole(lines);
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
                const int result = xvr_log(current.load(), XVR_LOG_PRIORITY_ERROR, "f", 1, "g", "m");
                if (result != XVR_LOG_ACCEPTED && result != XVR_LOG_UNKNOWN_LOG) ++unexpected;
            }
        });
    }
    opener.join();
    for (std::thread& writer : writers) writer.join();
    EXPECT_EQ(unexpected.load(), 0);
    xvr_free_log("THREADS_CHURN", "");
    EXPECT_EQ(xvr_log(current.load(), XVR_LOG_PRIORITY_ERROR, "f", 1, "g", "m"), XVR_LOG_UNKNOWN_LOG);
}

}  // namespace
