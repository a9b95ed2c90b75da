// Temporary output files that no signal may leave behind. Ctrl-C, SIGTERM, SIGHUP and SIGQUIT
// remove every registered file and then end the program as the signal would have; a file-size
// limit (SIGXFSZ) and a closed pipe (SIGPIPE) are turned into write errors, which the ordinary
// error path handles by removing the file.
#pragma once

#include <string>

namespace xvr_color {

// Call once, before any temporary file is made.
void install_signal_cleanup();

// A temporary file from creation to commit or removal. Creating it and registering it happen
// with the signals blocked, so there is no moment at which it exists unregistered.
class Registered_temporary_file {
public:
    // mkstemp on `pattern` (ending in XXXXXX); the descriptor is -1 and `error` the errno value
    // when it failed.
    explicit Registered_temporary_file(std::string pattern);
    ~Registered_temporary_file(); // removes the file unless it was released
    Registered_temporary_file(const Registered_temporary_file&) = delete;
    Registered_temporary_file& operator=(const Registered_temporary_file&) = delete;

    int descriptor() const { return m_descriptor; }
    int error() const { return m_error; }
    const std::string& name() const { return m_name; }
    bool close_descriptor();
    // The file has been renamed into place: nothing to remove any more.
    void release();

private:
    std::string m_name;
    int m_descriptor = -1;
    int m_error = 0;
    int m_slot = -1;
};

} // namespace xvr_color
