// Where the records of one log end up.
#pragma once

#include "log_record.hpp"

#include <memory>
#include <string>

class Log_sink {
public:
    virtual ~Log_sink() = default;
    // Writes the record as coming from `origin` (the log's names); false when the
    // destination refused it.
    virtual bool write(const std::string& origin, const Log_record& record) = 0;
};

// Drops every record: the destination "none".
class Discarding_sink final : public Log_sink {
public:
    bool write(const std::string&, const Log_record&) override { return true; }
};
