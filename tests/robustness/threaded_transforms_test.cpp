// Transforms on several threads at once, compared byte for byte with the same calls made one
// after another: threads with processors of their own, and threads sharing one processor for
// transforms only. The same cases run under helgrind (CMakeLists.txt), which must report
// nothing.
#include "public_calls.hpp"

#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

namespace {

constexpr int thread_count = 4;
constexpr int calls_per_thread = 12;
constexpr int32_t pixels_per_call = 700;  // several kernel blocks and a ragged end

struct Thread_work {
    std::vector<uint16_t> input;
    std::vector<std::vector<uint8_t>> outputs;  // one per call
};

Thread_work make_work(uint32_t seed)
{
    std::mt19937 random(seed);
    Thread_work work;
    work.input.resize(3 * pixels_per_call);
    for (uint16_t& sample : work.input) sample = static_cast<uint16_t>(random());
    work.outputs.assign(calls_per_thread, std::vector<uint8_t>(8 * pixels_per_call, 0xA5));
    return work;
}

// The calls of one thread: every transform and layout in turn, on its own output buffers.
void run_calls(void* processor, Thread_work& work, int thread)
{
    for (int k = 0; k < calls_per_thread; ++k) {
        const Transform_kind& kind = transform_kinds[(k + thread) % 4];
        Transform_call call = call_of(processor, work.input.data(), work.outputs[k].data(), pixels_per_call);
        call.input_format = k % 3;
        call.output_format = (k / 3 + thread) % 3;
        call.clamp_max[0] = call.clamp_max[1] = call.clamp_max[2] = 4095;
        call.shift[k % 3] = k % 2 == 0 ? -4 : 3;
        ASSERT_EQ(kind.run(call), NQ_COLOR_NO_ERROR) << kind.name << call;
    }
}

// Runs every thread's calls, first one thread after another, then all at once, and compares.
void expect_concurrent_equals_sequential(const std::vector<void*>& processor_of_thread)
{
    std::vector<Thread_work> sequential, concurrent;
    for (int t = 0; t < thread_count; ++t) {
        sequential.push_back(make_work(100 + t));
        concurrent.push_back(make_work(100 + t));
        run_calls(processor_of_thread[t], sequential[t], t);
    }
    std::vector<std::thread> threads;
    for (int t = 0; t < thread_count; ++t) {
        threads.emplace_back(run_calls, processor_of_thread[t], std::ref(concurrent[t]), t);
    }
    for (std::thread& thread : threads) thread.join();
    for (int t = 0; t < thread_count; ++t) {
        for (int k = 0; k < calls_per_thread; ++k) {
            ASSERT_EQ(concurrent[t].outputs[k], sequential[t].outputs[k])
                << "thread " << t << ", call " << k;
        }
    }
}

TEST(Threads, WithProcessorsOfTheirOwnWriteWhatOneThreadWrites)
{
    const Initialised_library library;
    std::vector<void*> processors;
    for (int t = 0; t < thread_count; ++t) {
        processors.push_back(make_busy_processor(t % 2 == 0 ? 16 : 10, 12, -1, t));
        ASSERT_NE(processors.back(), nullptr);
    }
    expect_concurrent_equals_sequential(processors);
    for (void* processor : processors) nq_color_destroy_color_processor(processor);
}

TEST(Threads, SharingOneProcessorForTransformsWriteWhatOneThreadWrites)
{
    const Initialised_library library;
    void* processor = make_busy_processor(12, 12, -1, 7);
    ASSERT_NE(processor, nullptr);
    expect_concurrent_equals_sequential(std::vector<void*>(thread_count, processor));
    nq_color_destroy_color_processor(processor);
}

}  // namespace
