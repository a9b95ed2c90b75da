// What the test doubles of the companion libraries saw, and what a test asks them to do.
//
// The doubles are opened and closed by the library under test, so they keep nothing of their
// own: every call they receive is written here, in a library that the test executable links and
// that therefore outlives them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

// Forgets every event, setting, counter, kept copy and log record.
void nq_probe_reset();

// Events: one line of text per call a double received, in the order received.
void nq_probe_event(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::vector<std::string> probe_events();
std::vector<std::string> probe_events_starting_with(const std::string& prefix); // "lut.", "sse.", ...
int nq_probe_count_events(const std::string& text);                            // events reading exactly `text`

// One of these in a double records "<name>.loaded" and "<name>.unloaded" as the library under
// test opens and closes it.
struct Probe_load_announcer {
    explicit Probe_load_announcer(const char* name) : m_name(name) { nq_probe_event("%s.loaded", name); }
    ~Probe_load_announcer() { nq_probe_event("%s.unloaded", m_name); }
    const char* m_name;
};

// Settings that a test chooses before a double is called; `fallback` when never set.
void nq_probe_set(const std::string& key, int value);
int nq_probe_setting(const std::string& key, int fallback);

// 1, 2, 3, ... per counter name, across loads and unloads of the doubles.
int nq_probe_next_number(const std::string& counter);

// The last bytes a double kept under `key`.
void nq_probe_keep_bytes(const std::string& key, const void* bytes, std::size_t size);
std::vector<unsigned char> probe_kept_bytes(const std::string& key);

// The last copy kept under `key`, if one of exactly this size was kept.
template <typename Record>
bool probe_kept(const std::string& key, Record& record)
{
    const std::vector<unsigned char> bytes = probe_kept_bytes(key);
    if (bytes.size() != sizeof record) return false;
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<unsigned char*>(&record));
    return true;
}

// Log records, as the logger double received them.
struct Probe_log_record {
    int priority;
    std::string file;
    int line;
    std::string function;
    std::string text;
};
void nq_probe_add_log_record(const Probe_log_record& record);
std::vector<Probe_log_record> probe_log_records();

inline bool ends_with(const std::string& text, const std::string& suffix)
{
    return text.size() >= suffix.size() && text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}
