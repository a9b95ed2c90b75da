#include "output_file.hpp"

#include "input_source.hpp"
#include "tool_error.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace xvr_color {

namespace {

bool write_all(int descriptor, const Output_file::Part& part)
{
    const auto* bytes = static_cast<const std::uint8_t*>(part.data);
    std::size_t written = 0;
    while (written < part.size) {
        const ssize_t result = write(descriptor, bytes + written, part.size - written);
        if (result < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        written += static_cast<std::size_t>(result);
    }
    return true;
}

// mkstemp makes the file readable by its owner only; an output image gets the permissions of
// any other file the user creates.
bool give_ordinary_permissions(int descriptor)
{
    const mode_t mask = umask(0);
    umask(mask);
    return fchmod(descriptor, 0666 & ~mask) == 0;
}

[[noreturn]] void fail(const std::string& path, int error)
{
    throw Tool_error("cannot write " + path + ": " + std::strerror(error));
}

} // namespace

Output_file::Output_file(const std::string& path) : m_path(path)
{
    if (path == standard_stream_name) {
        return;
    }
    m_temporary = std::make_unique<Registered_temporary_file>(path + ".xvr-color-XXXXXX");
    if (m_temporary->descriptor() < 0) {
        fail(path, m_temporary->error());
    }
}

Output_file::~Output_file() = default;

void Output_file::commit(const std::vector<std::uint8_t>& bytes)
{
    commit({Part{bytes.data(), bytes.size()}});
}

void Output_file::commit(const std::vector<Part>& parts)
{
    const int target = m_temporary ? m_temporary->descriptor() : STDOUT_FILENO;
    for (const Part& part : parts) {
        if (!write_all(target, part)) {
            if (!m_temporary) {
                throw Tool_error(std::string("cannot write standard output: ") + std::strerror(errno));
            }
            fail(m_path, errno);
        }
    }
    if (m_temporary) {
        commit_written();
    }
}

int Output_file::descriptor() const
{
    return m_temporary ? m_temporary->descriptor() : -1;
}

void Output_file::commit_written()
{
    const int descriptor = m_temporary->descriptor();
    // Closing reports late write errors (e.g. a full disk on a network file system).
    if (!give_ordinary_permissions(descriptor) || fsync(descriptor) != 0 || !m_temporary->close_descriptor()) {
        fail(m_path, errno);
    }
    if (std::rename(m_temporary->name().c_str(), m_path.c_str()) != 0) {
        fail(m_path, errno);
    }
    m_temporary->release();
}

} // namespace xvr_color
