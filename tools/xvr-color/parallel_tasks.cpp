#include "parallel_tasks.hpp"

#include <atomic>
#include <exception>
#include <mutex>
#include <sched.h>
#include <thread>
#include <vector>

namespace xvr_color {

void run_in_parallel(std::size_t task_count, unsigned threads,
                     const std::function<void(std::size_t task)>& task)
{
    std::atomic<std::size_t> next{0};
    std::atomic<bool> failed{false};
    std::exception_ptr first_failure;
    std::mutex failure_mutex;
    const auto work = [&] {
        for (std::size_t index = next++; index < task_count && !failed; index = next++) {
            try {
                task(index);
            } catch (...) {
                std::lock_guard<std::mutex> lock(failure_mutex);
                if (!first_failure) {
                    first_failure = std::current_exception();
                }
                failed = true;
            }
        }
    };
    const std::size_t helpers = std::min<std::size_t>(threads, task_count);
    std::vector<std::thread> pool;
    for (std::size_t i = 1; i < helpers; ++i) {
        pool.emplace_back(work);
    }
    work();
    for (std::thread& thread : pool) {
        thread.join();
    }
    if (first_failure) {
        std::rethrow_exception(first_failure);
    }
}

unsigned available_processors()
{
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) == 0) {
        const int count = CPU_COUNT(&set);
        if (count > 0) {
            return static_cast<unsigned>(count);
        }
    }
    const unsigned reported = std::thread::hardware_concurrency();
    return reported > 0 ? reported : 1;
}

} // namespace xvr_color
