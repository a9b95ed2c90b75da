#include "console.hpp"

#include <cstdio>
#include <unistd.h>

namespace xvr_color {

Console::Console(bool quiet, bool progress_wanted)
    : m_quiet(quiet), m_progress(progress_wanted && !quiet && isatty(STDERR_FILENO) == 1)
{
}

Console::~Console()
{
    end_progress();
}

void Console::write_line(const std::string& line)
{
    wipe_progress();
    std::fprintf(stderr, "xvr-color: %s\n", line.c_str());
    std::fflush(stderr);
}

void Console::wipe_progress()
{
    if (m_progress_shown) {
        std::fputs("\r\033[K", stderr);
        m_progress_shown = false;
    }
}

void Console::summary(const std::string& line)
{
    if (!m_quiet) {
        std::lock_guard<std::mutex> lock(m_mutex);
        write_line(line);
    }
}

void Console::note(const std::string& line)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    write_line("note: " + line);
}

void Console::error(const std::string& line)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    write_line(line);
}

void Console::progress(const std::string& text, bool final)
{
    if (!m_progress) {
        return;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto now = std::chrono::steady_clock::now();
    if (!final && m_progress_shown && now - m_last_progress < std::chrono::milliseconds(100)) {
        return;
    }
    m_last_progress = now;
    std::fprintf(stderr, "\r\033[Kxvr-color: %s", text.c_str());
    std::fflush(stderr);
    m_progress_shown = true;
}

void Console::end_progress()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    wipe_progress();
    std::fflush(stderr);
}

} // namespace xvr_color
