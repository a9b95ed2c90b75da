// Runs a program as a user would from a shell, in a chosen folder, and collects what it says.
#pragma once

#include <string>
#include <vector>

namespace xvr_color_test {

struct Program_run {
    int exit_status = -1; // -1 when the program did not exit normally (e.g. a crash)
    std::string out;
    std::string err;
};

// LD_LIBRARY_PATH is removed from the program's environment, so that it finds its libraries
// through its own RPATH only, as it does when started by hand.
Program_run run_program(const std::string& program, const std::vector<std::string>& arguments,
                        const std::string& folder);

// Number of lines a program printed (each ended by a newline).
int line_count(const std::string& text);

} // namespace xvr_color_test
