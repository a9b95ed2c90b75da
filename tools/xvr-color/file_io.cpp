#include "file_io.hpp"

#include "tool_error.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace xvr_color {

namespace {

std::string system_reason()
{
    return std::strerror(errno);
}

// Closes the descriptor and removes the temporary file unless the write was committed.
class Temporary_file {
public:
    explicit Temporary_file(const std::string& target) : m_name(target + ".xvr-color-XXXXXX")
    {
        m_descriptor = mkstemp(&m_name[0]);
        if (m_descriptor < 0) {
            throw Tool_error("cannot write " + target + ": " + system_reason());
        }
    }
    ~Temporary_file()
    {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
        if (!m_committed) {
            unlink(m_name.c_str());
        }
    }
    Temporary_file(const Temporary_file&) = delete;
    Temporary_file& operator=(const Temporary_file&) = delete;

    int descriptor() const { return m_descriptor; }
    const std::string& name() const { return m_name; }

    // Closing reports late write errors (e.g. a full disk on a network file system).
    bool close_descriptor()
    {
        int result = close(m_descriptor);
        m_descriptor = -1;
        return result == 0;
    }
    void commit() { m_committed = true; }

private:
    std::string m_name;
    int m_descriptor = -1;
    bool m_committed = false;
};

bool write_all(int descriptor, const std::vector<std::uint8_t>& bytes)
{
    std::size_t written = 0;
    while (written < bytes.size()) {
        ssize_t result = write(descriptor, bytes.data() + written, bytes.size() - written);
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

// mkstemp creates the file readable by its owner only; an output image should get the same
// permissions as any other file the user creates.
bool give_ordinary_permissions(int descriptor)
{
    mode_t mask = umask(0);
    umask(mask);
    return fchmod(descriptor, 0666 & ~mask) == 0;
}

} // namespace

std::vector<std::uint8_t> read_file(const std::string& path)
{
    int descriptor = open(path.c_str(), O_RDONLY);
    if (descriptor < 0) {
        throw Tool_error("cannot open " + path + ": " + system_reason());
    }
    std::vector<std::uint8_t> bytes;
    struct stat status {};
    if (fstat(descriptor, &status) == 0 && status.st_size > 0) {
        bytes.reserve(static_cast<std::size_t>(status.st_size));
    }
    std::uint8_t chunk[65536];
    for (;;) {
        ssize_t count = read(descriptor, chunk, sizeof chunk);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            std::string reason = system_reason();
            close(descriptor);
            throw Tool_error("cannot read " + path + ": " + reason);
        }
        if (count == 0) {
            break;
        }
        bytes.insert(bytes.end(), chunk, chunk + count);
    }
    close(descriptor);
    return bytes;
}

void write_file_atomically(const std::string& path, const std::vector<std::uint8_t>& bytes)
{
    Temporary_file temporary(path);
    if (!write_all(temporary.descriptor(), bytes) ||
        !give_ordinary_permissions(temporary.descriptor()) ||
        fsync(temporary.descriptor()) != 0 || !temporary.close_descriptor()) {
        throw Tool_error("cannot write " + path + ": " + system_reason());
    }
    if (std::rename(temporary.name().c_str(), path.c_str()) != 0) {
        throw Tool_error("cannot write " + path + ": " + system_reason());
    }
    temporary.commit();
}

} // namespace xvr_color
