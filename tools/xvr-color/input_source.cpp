#include "input_source.hpp"

#include "tool_error.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace xvr_color {

Input_source::Input_source(const std::string& path)
{
    if (path == standard_stream_name) {
        m_name = "standard input";
        m_descriptor = STDIN_FILENO;
    } else {
        m_name = path;
        m_descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (m_descriptor < 0) {
            throw Tool_error("cannot open " + path + ": " + std::strerror(errno));
        }
        m_owns_descriptor = true;
    }
    struct stat status {};
    if (fstat(m_descriptor, &status) != 0) {
        return;
    }
    if (S_ISDIR(status.st_mode)) {
        close(m_descriptor);
        throw Tool_error("cannot read " + path + ": it is a folder");
    }
    if (S_ISREG(status.st_mode)) {
        m_regular_file = true;
        m_file_size = static_cast<std::uint64_t>(status.st_size);
    }
}

Input_source::~Input_source()
{
    if (m_owns_descriptor) {
        close(m_descriptor);
    }
}

bool Input_source::fill(std::vector<std::uint8_t>& bytes, std::uint64_t size)
{
    if (size > SIZE_MAX / 2) {
        throw Tool_error(m_name + " is too large for this 32-bit program");
    }
    std::size_t held = bytes.size();
    if (held >= size) {
        return true;
    }
    // Room grows geometrically (many small PNG chunks must not copy the file again and again),
    // up to a regular file's size, which is known.
    if (bytes.capacity() < size) {
        std::uint64_t room = std::max<std::uint64_t>(size, 2 * std::uint64_t(bytes.capacity()));
        if (m_regular_file) {
            room = std::max<std::uint64_t>(size, std::min(room, m_file_size));
        }
        bytes.reserve(static_cast<std::size_t>(room));
    }
    bytes.resize(static_cast<std::size_t>(size));
    held += read_into(bytes.data() + held, bytes.size() - held);
    bytes.resize(held);
    return held == size;
}

std::size_t Input_source::read_into(std::uint8_t* target, std::size_t size)
{
    std::size_t held = 0;
    while (held < size) {
        const ssize_t count = read(m_descriptor, target + held, size - held);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            const std::string reason = std::strerror(errno);
            throw Tool_error("cannot read " + m_name + ": " + reason);
        }
        if (count == 0) {
            break;
        }
        held += static_cast<std::size_t>(count);
    }
    return held;
}

void Input_source::read_rest(std::vector<std::uint8_t>& bytes, std::uint64_t limit)
{
    constexpr std::uint64_t step = 1u << 20;
    while (fill(bytes, bytes.size() + step)) {
        if (bytes.size() > limit) {
            throw Tool_error(m_name + " is too large: more than " + std::to_string(limit >> 20) +
                             " MiB, beyond the largest image this program reads");
        }
    }
}

} // namespace xvr_color
