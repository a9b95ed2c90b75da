// Everything the tool tells its user goes to standard error, so that standard output carries
// nothing but an image written to "-": the summary (not with -q), notes and errors, each on
// a line starting with "xvr-color: ", and on a terminal a progress line that rewrites itself
// and is wiped before any other line. Lines from several threads never mix.
#pragma once

#include <chrono>
#include <mutex>
#include <string>

namespace xvr_color {

class Console {
public:
    // `progress_wanted`: the run may show a progress line; it does only on a terminal.
    Console(bool quiet, bool progress_wanted);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    void summary(const std::string& line); // not with -q
    void note(const std::string& line);    // always: something the user must know
    void error(const std::string& line);   // always
    // Shown at most ten times a second; `final` text is shown at once.
    void progress(const std::string& text, bool final = false);
    void end_progress();

    bool shows_progress() const { return m_progress; }

private:
    void write_line(const std::string& line);
    void wipe_progress();

    std::mutex m_mutex;
    bool m_quiet;
    bool m_progress;
    bool m_progress_shown = false;
    std::chrono::steady_clock::time_point m_last_progress{};
};

} // namespace xvr_color
