// The open logs of the process, found by their two names (get and free) or by their handle
// (each record). A handle is a serial number that is never given out twice, so a handle kept
// after its log was closed finds nothing instead of another log.
#pragma once

#include "log_channel.hpp"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

class Log_registry {
public:
    // Opens the log, or counts one more user of it; returns its handle. Throws std::bad_alloc.
    void* acquire(const std::string& module_name, const std::string& secondary_name);

    // Counts one user less; the last one closes the log. Unknown names are ignored.
    void release(const std::string& module_name, const std::string& secondary_name);

    // The open log of a handle, or null. The channel stays usable by the caller even if the log
    // is closed meanwhile.
    std::shared_ptr<const Log_channel> find(const void* handle) const;

private:
    struct Open_log {
        std::uint32_t serial;
        std::uint32_t users;
    };
    using Log_names = std::pair<std::string, std::string>;

    std::uint32_t next_serial();

    mutable std::mutex m_mutex;
    std::map<Log_names, Open_log> m_logs_by_names;
    // Node-based maps: once every log is freed they hold no memory (a hash map would keep its
    // bucket array, lost when the library is unloaded).
    std::map<std::uint32_t, std::shared_ptr<const Log_channel>> m_channels_by_serial;
    std::uint32_t m_last_serial = 0;
};
