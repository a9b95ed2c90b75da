// Runs numbered tasks on several threads: each thread takes the next task number until all are
// taken. The first exception a task throws is passed on to the caller once every thread has
// stopped; tasks not yet started then are skipped.
#pragma once

#include <cstddef>
#include <functional>

namespace xvr_color {

void run_in_parallel(std::size_t task_count, unsigned threads,
                     const std::function<void(std::size_t task)>& task);

// The processors this process may run on (its CPU affinity), at least 1.
unsigned available_processors();

} // namespace xvr_color
