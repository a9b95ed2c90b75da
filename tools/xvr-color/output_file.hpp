// Where an image goes: a file, or standard output for "-". A file is written under a temporary
// name in its folder, made when the Output_file is made (so an unwritable folder is reported
// before any work), and renamed into place only when every byte is on disk: a failed or
// interrupted run never leaves a half-written file and never damages one that was there.
#pragma once

#include "signal_cleanup.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace xvr_color {

class Output_file {
public:
    // Throws Tool_error naming the file and the reason when the temporary file cannot be made.
    explicit Output_file(const std::string& path);
    ~Output_file();
    Output_file(const Output_file&) = delete;
    Output_file& operator=(const Output_file&) = delete;

    // Writes all bytes and puts the file in place; throws Tool_error, leaving nothing behind.
    void commit(const std::vector<std::uint8_t>& bytes);
    // The same for bytes in several places, written one after the other.
    struct Part {
        const void* data;
        std::size_t size;
    };
    void commit(const std::vector<Part>& parts);

    // For writers that need a file of their own (libtiff seeks): the temporary file's descriptor,
    // or -1 for standard output. After writing through it, commit_written() puts the file in place.
    int descriptor() const;
    void commit_written();

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
    std::unique_ptr<Registered_temporary_file> m_temporary; // none for standard output
};

} // namespace xvr_color
