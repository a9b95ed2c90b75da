// The one kind of failure the tool reports to its user: a message that is printed as one line
// on standard error, after which the program exits with a non-zero status.
#pragma once

#include <stdexcept>
#include <string>

namespace xvr_color {

class Tool_error : public std::runtime_error {
public:
    explicit Tool_error(const std::string& message) : std::runtime_error(message) {}
};

// A mistake on the command line, as opposed to a file or library problem: main() gives it a
// different exit status so that scripts can tell the two apart.
class Usage_error : public Tool_error {
public:
    explicit Usage_error(const std::string& message) : Tool_error(message) {}
};

} // namespace xvr_color
