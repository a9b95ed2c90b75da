// What the process holds of a vector library, asked without loading anything: for reports of
// which level ran (the command-line tool, the benchmark) and for tests that must know the
// processors really used the library they meant to test.
#pragma once

#include <string>

// The file name of the vector library of `level` (1 SSE4.1, 2 AVX2), as the core opens it.
std::string vector_library_file(int level);

struct Loaded_vector_library {
    bool loaded = false;  // the process has it open (a processor of that level bound it)
    bool starts = false;  // and its initialize accepts this processor
};

// Asking a loaded library to start again is harmless: it accepts an initialize per processor,
// each matched by a terminate, which this call makes at once.
Loaded_vector_library loaded_vector_library(int level);
