// Writes whole lines to file descriptors, one writer at a time in the whole process, so that
// lines of different threads never mix even when a line needs several write(2) calls.
#pragma once

#include <string>

// False when the descriptor refused part of the line (closed, full, broken pipe). A broken
// pipe does not raise SIGPIPE: a host must not die because its standard error went away.
bool write_line_locked(int descriptor, const std::string& line);
