// One record as the caller of xvr_log hands it over.
#pragma once

struct Log_record {
    int priority;
    const char* file;      // may be null
    int line;
    const char* function;  // may be null
    const char* message;   // never null
};
