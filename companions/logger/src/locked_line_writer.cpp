#include "locked_line_writer.hpp"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <mutex>
#include <pthread.h>
#include <unistd.h>

namespace {

// Constant-initialised and never destroyed, so records written from exit-time destructors
// still find it.
std::mutex line_writer_mutex;

// Holds SIGPIPE back from this thread while it writes, and takes away the one that a write to
// a broken pipe raised, unless one was already pending before (that one is the host's).
class Sigpipe_suppression {
public:
    Sigpipe_suppression()
    {
        sigset_t pending;
        sigpending(&pending);
        m_was_pending = sigismember(&pending, SIGPIPE) == 1;
        sigset_t sigpipe_only;
        sigemptyset(&sigpipe_only);
        sigaddset(&sigpipe_only, SIGPIPE);
        m_blocked = pthread_sigmask(SIG_BLOCK, &sigpipe_only, &m_previous_mask) == 0;
    }

    ~Sigpipe_suppression()
    {
        if (!m_blocked) return;
        if (m_pipe_broke && !m_was_pending) discard_pending_sigpipe();
        pthread_sigmask(SIG_SETMASK, &m_previous_mask, nullptr);
    }

    void note_broken_pipe() { m_pipe_broke = true; }

    Sigpipe_suppression(const Sigpipe_suppression&) = delete;
    Sigpipe_suppression& operator=(const Sigpipe_suppression&) = delete;

private:
    static void discard_pending_sigpipe()
    {
        sigset_t sigpipe_only;
        sigemptyset(&sigpipe_only);
        sigaddset(&sigpipe_only, SIGPIPE);
        const timespec no_wait{0, 0};
        while (sigtimedwait(&sigpipe_only, nullptr, &no_wait) == -1 && errno == EINTR) {
        }
    }

    sigset_t m_previous_mask{};
    bool m_blocked = false;
    bool m_was_pending = false;
    bool m_pipe_broke = false;
};

bool write_all(int descriptor, const char* data, std::size_t size, Sigpipe_suppression& sigpipe)
{
    while (size > 0) {
        const ssize_t written = ::write(descriptor, data, size);
        if (written < 0) {
            if (errno == EINTR) continue;
            if (errno == EPIPE) sigpipe.note_broken_pipe();
            return false;
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

}  // namespace

bool write_line_locked(int descriptor, const std::string& line)
{
    const int saved_errno = errno;
    bool written;
    {
        std::lock_guard<std::mutex> lock(line_writer_mutex);
        Sigpipe_suppression sigpipe;
        written = write_all(descriptor, line.data(), line.size(), sigpipe);
    }
    errno = saved_errno;  // logging must not disturb the caller's errno
    return written;
}
