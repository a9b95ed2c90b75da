#include "stream_sink.hpp"

#include "locked_line_writer.hpp"
#include "record_format.hpp"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

Stream_sink::Stream_sink() : m_descriptor(STDERR_FILENO), m_owns_descriptor(false) {}

Stream_sink::Stream_sink(const std::string& path) : m_descriptor(-1), m_owns_descriptor(true)
{
    // O_APPEND makes each write land at the end even when other processes append to the same
    // file, so their lines do not overwrite ours.
    m_descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (m_descriptor < 0) throw std::system_error(errno, std::generic_category(), path);
}

Stream_sink::~Stream_sink()
{
    if (m_owns_descriptor) ::close(m_descriptor);
}

bool Stream_sink::write(const std::string& origin, const Log_record& record)
{
    const std::string line =
        format_record_line(origin, record, std::chrono::system_clock::now(), ::getpid());
    return write_line_locked(m_descriptor, line);
}
