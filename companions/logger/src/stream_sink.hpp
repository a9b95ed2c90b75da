// Records as lines on standard error or appended to a file.
#pragma once

#include "log_sink.hpp"

#include <string>

class Stream_sink final : public Log_sink {
public:
    // Standard error, which stays open when the sink goes.
    Stream_sink();
    // The file, opened for appending and created (mode 0644 less the umask) if absent. Throws
    // std::system_error when it cannot be opened.
    explicit Stream_sink(const std::string& path);
    ~Stream_sink() override;

    bool write(const std::string& origin, const Log_record& record) override;

    Stream_sink(const Stream_sink&) = delete;
    Stream_sink& operator=(const Stream_sink&) = delete;

private:
    int m_descriptor;
    bool m_owns_descriptor;
};
