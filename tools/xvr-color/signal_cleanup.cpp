#include "signal_cleanup.hpp"

#include "tool_error.hpp"

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <pthread.h>
#include <unistd.h>

namespace xvr_color {

namespace {

// A signal handler may only read plain memory and call async-signal-safe functions, so the
// names live in fixed slots, published by an atomic flag.
constexpr int slot_count = 64;
char slot_names[slot_count][PATH_MAX];
std::atomic<bool> slot_in_use[slot_count];

const int ending_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

extern "C" void remove_temporaries_and_end(int signal_number)
{
    for (int slot = 0; slot < slot_count; ++slot) {
        if (slot_in_use[slot].load()) {
            unlink(slot_names[slot]);
        }
    }
    std::signal(signal_number, SIG_DFL);
    raise(signal_number);
}

std::mutex slot_mutex; // between threads only; the handler never takes it

int take_slot(const std::string& name)
{
    std::lock_guard<std::mutex> lock(slot_mutex);
    if (name.size() >= PATH_MAX) {
        return -1;
    }
    for (int slot = 0; slot < slot_count; ++slot) {
        if (!slot_in_use[slot].load()) {
            std::memcpy(slot_names[slot], name.c_str(), name.size() + 1);
            slot_in_use[slot].store(true);
            return slot;
        }
    }
    return -1;
}

// Holds the ending signals back in this thread for the life of the object.
class Ending_signals_blocked {
public:
    Ending_signals_blocked()
    {
        sigset_t set;
        sigemptyset(&set);
        for (int signal_number : ending_signals) {
            sigaddset(&set, signal_number);
        }
        pthread_sigmask(SIG_BLOCK, &set, &m_previous);
    }
    ~Ending_signals_blocked() { pthread_sigmask(SIG_SETMASK, &m_previous, nullptr); }
    Ending_signals_blocked(const Ending_signals_blocked&) = delete;
    Ending_signals_blocked& operator=(const Ending_signals_blocked&) = delete;

private:
    sigset_t m_previous;
};

} // namespace

void install_signal_cleanup()
{
    struct sigaction action {};
    action.sa_handler = remove_temporaries_and_end;
    sigemptyset(&action.sa_mask);
    for (int signal_number : ending_signals) {
        sigaddset(&action.sa_mask, signal_number);
    }
    for (int signal_number : ending_signals) {
        struct sigaction previous {};
        // A signal ignored by whoever started us (nohup, a shell's background job) stays ignored.
        if (sigaction(signal_number, nullptr, &previous) == 0 && previous.sa_handler == SIG_IGN) {
            continue;
        }
        sigaction(signal_number, &action, nullptr);
    }
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

Registered_temporary_file::Registered_temporary_file(std::string pattern)
    : m_name(std::move(pattern))
{
    Ending_signals_blocked blocked;
    m_descriptor = mkostemp(&m_name[0], O_CLOEXEC);
    if (m_descriptor < 0) {
        m_error = errno;
        return;
    }
    m_slot = take_slot(m_name);
    if (m_slot < 0) {
        close(m_descriptor);
        unlink(m_name.c_str());
        m_descriptor = -1;
        m_error = ENAMETOOLONG;
    }
}

Registered_temporary_file::~Registered_temporary_file()
{
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
    if (m_slot >= 0) {
        unlink(m_name.c_str());
        slot_in_use[m_slot].store(false);
    }
}

bool Registered_temporary_file::close_descriptor()
{
    const int result = close(m_descriptor);
    m_descriptor = -1;
    return result == 0;
}

void Registered_temporary_file::release()
{
    if (m_slot >= 0) {
        slot_in_use[m_slot].store(false);
        m_slot = -1;
    }
}

} // namespace xvr_color
