// C++ views of what the probe holds, for GoogleTest expectations.
#pragma once

#include "companion_probe.h"

#include <string>
#include <vector>

struct Probe_log_record {
    int priority;
    std::string file;
    int line;
    std::string function;
    std::string text;
};

inline std::vector<std::string> probe_events()
{
    std::vector<std::string> events;
    for (int index = 0; index < nq_probe_event_count(); ++index) {
        events.emplace_back(nq_probe_event_at(index));
    }
    return events;
}

// The events that begin with `prefix` ("lut.", "sse.", ...), in order.
inline std::vector<std::string> probe_events_starting_with(const std::string& prefix)
{
    std::vector<std::string> matching;
    for (const std::string& event : probe_events()) {
        if (event.compare(0, prefix.size(), prefix) == 0) matching.push_back(event);
    }
    return matching;
}

inline std::vector<Probe_log_record> probe_log_records()
{
    std::vector<Probe_log_record> records;
    for (int index = 0; index < nq_probe_log_record_count(); ++index) {
        const nq_probe_log_record record = nq_probe_log_record_at(index);
        records.push_back(
            Probe_log_record{record.priority, record.file, record.line, record.function, record.text});
    }
    return records;
}

// The last copy a double kept under `key`, if one of exactly this size was kept.
template <typename Record>
bool probe_kept(const char* key, Record& record)
{
    return nq_probe_copy_bytes(key, &record, static_cast<int>(sizeof record)) ==
           static_cast<int>(sizeof record);
}

inline bool ends_with(const std::string& text, const std::string& suffix)
{
    return text.size() >= suffix.size() &&
           text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}
