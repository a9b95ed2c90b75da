#include "log_registry.hpp"

namespace {

void* handle_of(std::uint32_t serial)
{
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(serial));
}

std::uint32_t serial_of(const void* handle)
{
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle));
}

}  // namespace

std::uint32_t Log_registry::next_serial()
{
    // Zero is the null handle; after four billion logs the numbers start again, skipping the
    // ones still open.
    do {
        ++m_last_serial;
    } while (m_last_serial == 0 || m_channels_by_serial.count(m_last_serial) != 0);
    return m_last_serial;
}

void* Log_registry::acquire(const std::string& module_name, const std::string& secondary_name)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    Log_names names(module_name, secondary_name);
    const auto open = m_logs_by_names.find(names);
    if (open != m_logs_by_names.end()) {
        ++open->second.users;
        return handle_of(open->second.serial);
    }
    // The channel is made under the lock so that two threads opening the same log at once
    // do not both read the environment and open the file.
    std::shared_ptr<const Log_channel> channel = open_log_channel(module_name, secondary_name);
    const std::uint32_t serial = next_serial();
    m_channels_by_serial.emplace(serial, channel);
    try {
        m_logs_by_names.emplace(std::move(names), Open_log{serial, 1});
    } catch (...) {
        m_channels_by_serial.erase(serial);
        throw;
    }
    return handle_of(serial);
}

void Log_registry::release(const std::string& module_name, const std::string& secondary_name)
{
    std::shared_ptr<const Log_channel> closing;  // closed after the lock is let go
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const auto open = m_logs_by_names.find(Log_names(module_name, secondary_name));
        if (open == m_logs_by_names.end()) return;
        if (--open->second.users != 0) return;
        const auto channel = m_channels_by_serial.find(open->second.serial);
        closing = std::move(channel->second);
        m_channels_by_serial.erase(channel);
        m_logs_by_names.erase(open);
    }
}

std::shared_ptr<const Log_channel> Log_registry::find(const void* handle) const
{
    if (handle == nullptr) return nullptr;
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto channel = m_channels_by_serial.find(serial_of(handle));
    return channel != m_channels_by_serial.end() ? channel->second : nullptr;
}
