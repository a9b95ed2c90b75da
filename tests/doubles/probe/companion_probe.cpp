#include "companion_probe.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <mutex>

namespace {

struct Journal {
    std::mutex mutex;
    std::vector<std::string> events;
    std::map<std::string, int> settings;
    std::map<std::string, int> counters;
    std::map<std::string, std::vector<unsigned char>> kept_bytes;
    std::vector<Probe_log_record> log_records;
};

// Never destroyed: the library under test may still call a double while the process exits.
Journal& journal()
{
    static Journal* const instance = new Journal;
    return *instance;
}

// Runs `action` on the journal under its lock.
template <typename Action>
auto locked(Action&& action)
{
    Journal& j = journal();
    std::lock_guard<std::mutex> lock(j.mutex);
    return action(j);
}

}  // namespace

void nq_probe_reset()
{
    locked([](Journal& j) {
        j.events.clear();
        j.settings.clear();
        j.counters.clear();
        j.kept_bytes.clear();
        j.log_records.clear();
    });
}

void nq_probe_event(const char* format, ...)
{
    va_list arguments, measuring;
    va_start(arguments, format);
    va_copy(measuring, arguments);
    std::string text(static_cast<std::size_t>(std::max(std::vsnprintf(nullptr, 0, format, measuring), 0)), '\0');
    va_end(measuring);
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    va_end(arguments);
    locked([&](Journal& j) { j.events.push_back(std::move(text)); });
}

std::vector<std::string> probe_events()
{
    return locked([](Journal& j) { return j.events; });
}

std::vector<std::string> probe_events_starting_with(const std::string& prefix)
{
    std::vector<std::string> matching;
    for (const std::string& event : probe_events()) {
        if (event.compare(0, prefix.size(), prefix) == 0) matching.push_back(event);
    }
    return matching;
}

int nq_probe_count_events(const std::string& text)
{
    return locked([&](Journal& j) { return static_cast<int>(std::count(j.events.begin(), j.events.end(), text)); });
}

void nq_probe_set(const std::string& key, int value)
{
    locked([&](Journal& j) { j.settings[key] = value; });
}

int nq_probe_setting(const std::string& key, int fallback)
{
    return locked([&](Journal& j) {
        const auto found = j.settings.find(key);
        return found == j.settings.end() ? fallback : found->second;
    });
}

int nq_probe_next_number(const std::string& counter)
{
    return locked([&](Journal& j) { return ++j.counters[counter]; });
}

void nq_probe_keep_bytes(const std::string& key, const void* bytes, std::size_t size)
{
    const auto* first = static_cast<const unsigned char*>(bytes);
    locked([&](Journal& j) { j.kept_bytes[key].assign(first, first + size); });
}

std::vector<unsigned char> probe_kept_bytes(const std::string& key)
{
    return locked([&](Journal& j) { return j.kept_bytes[key]; });
}

void nq_probe_add_log_record(const Probe_log_record& record)
{
    locked([&](Journal& j) { j.log_records.push_back(record); });
}

std::vector<Probe_log_record> probe_log_records()
{
    return locked([](Journal& j) { return j.log_records; });
}
