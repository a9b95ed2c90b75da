// Where an image comes from: a file, or standard input for "-". Readers take it front to back
// and only as far as the header they have checked says they need, so a pipe, a character
// device or a huge file is never read whole before its header has been judged.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace xvr_color {

constexpr const char* standard_stream_name = "-";

class Input_source {
public:
    // Throws Tool_error naming the file and the system's reason when it cannot be opened.
    explicit Input_source(const std::string& path);
    ~Input_source();
    Input_source(const Input_source&) = delete;
    Input_source& operator=(const Input_source&) = delete;

    // How messages call it: the path, or "standard input".
    const std::string& name() const { return m_name; }
    // A regular file can be read at any offset (libtiff needs that).
    bool is_regular_file() const { return m_regular_file; }
    int descriptor() const { return m_descriptor; }

    // Reads on until `bytes` holds `size` bytes; false when the input ends first (`bytes` then
    // holds all there was). Throws Tool_error on a read error.
    bool fill(std::vector<std::uint8_t>& bytes, std::uint64_t size);

    // Reads up to `size` bytes into `target`; returns how many (fewer only at the end).
    std::size_t read_into(std::uint8_t* target, std::size_t size);

    // Reads everything that is left, refusing an input of more than `limit` bytes in all.
    void read_rest(std::vector<std::uint8_t>& bytes, std::uint64_t limit);

private:
    std::string m_name;
    int m_descriptor = -1;
    bool m_owns_descriptor = false;
    bool m_regular_file = false;
    std::uint64_t m_file_size = 0;
};

} // namespace xvr_color
