#include "companion_probe.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace {

struct Stored_log_record {
    int priority;
    std::string file;
    int line;
    std::string function;
    std::string text;
};

struct Journal {
    std::mutex mutex;
    std::deque<std::string> events;  // a deque keeps earlier strings in place while it grows
    std::map<std::string, int> settings;
    std::map<std::string, int> counters;
    std::map<std::string, std::vector<unsigned char>> kept_bytes;
    std::deque<Stored_log_record> log_records;
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

std::string formatted(const char* format, va_list arguments)
{
    va_list measuring;
    va_copy(measuring, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measuring);
    va_end(measuring);
    if (length < 0) return std::string("(unformattable event)");
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

}  // namespace

void nq_probe_reset(void)
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
    va_list arguments;
    va_start(arguments, format);
    std::string text = formatted(format, arguments);
    va_end(arguments);
    locked([&](Journal& j) { j.events.push_back(std::move(text)); });
}

int nq_probe_event_count(void)
{
    return locked([](Journal& j) { return static_cast<int>(j.events.size()); });
}

const char* nq_probe_event_at(int index)
{
    return locked([=](Journal& j) -> const char* {
        if (index < 0 || index >= static_cast<int>(j.events.size())) return nullptr;
        return j.events[static_cast<std::size_t>(index)].c_str();
    });
}

int nq_probe_count_events(const char* text)
{
    return locked([=](Journal& j) {
        return static_cast<int>(std::count(j.events.begin(), j.events.end(), text));
    });
}

void nq_probe_set(const char* key, int value)
{
    locked([=](Journal& j) { j.settings[key] = value; });
}

int nq_probe_setting(const char* key, int fallback)
{
    return locked([=](Journal& j) {
        const auto found = j.settings.find(key);
        return found == j.settings.end() ? fallback : found->second;
    });
}

int nq_probe_next_number(const char* counter)
{
    return locked([=](Journal& j) { return ++j.counters[counter]; });
}

void nq_probe_keep_bytes(const char* key, const void* bytes, int size)
{
    const auto* first = static_cast<const unsigned char*>(bytes);
    locked([=](Journal& j) { j.kept_bytes[key].assign(first, first + size); });
}

int nq_probe_copy_bytes(const char* key, void* destination, int size)
{
    return locked([=](Journal& j) {
        const auto found = j.kept_bytes.find(key);
        if (found == j.kept_bytes.end()) return -1;
        const int kept = static_cast<int>(found->second.size());
        std::memcpy(destination, found->second.data(),
                    static_cast<std::size_t>(kept < size ? kept : size));
        return kept;
    });
}

void nq_probe_add_log_record(int priority, const char* file, int line, const char* function,
                             const char* text)
{
    locked([=](Journal& j) {
        j.log_records.push_back(Stored_log_record{priority, file, line, function, text});
    });
}

int nq_probe_log_record_count(void)
{
    return locked([](Journal& j) { return static_cast<int>(j.log_records.size()); });
}

nq_probe_log_record nq_probe_log_record_at(int index)
{
    return locked([=](Journal& j) {
        if (index < 0 || index >= static_cast<int>(j.log_records.size())) {
            return nq_probe_log_record{-1, "", -1, "", ""};
        }
        const Stored_log_record& record = j.log_records[static_cast<std::size_t>(index)];
        return nq_probe_log_record{record.priority, record.file.c_str(), record.line,
                                   record.function.c_str(), record.text.c_str()};
    });
}
