// A seeded fuzzer through the public calls. Each transform's code is predicted by a model of
// the validation order written here, apart from the library; the output buffer is filled with
// a sentinel first, and must keep it wholly after a refused call and past the last pixel after
// a successful one; the input is never written. A failure names the seed and the call:
// NQ_FUZZ_SEED=<seed> reruns the same sequence.
#include "public_calls.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

constexpr int transform_calls = 100000;
constexpr int32_t most_pixels = 67;
constexpr uint8_t sentinel = 0xA5;

// What the model knows of a processor: only what validation reads.
struct Processor_model {
    void* handle;
    int32_t output_table_size;
    bool output_table_enabled[3];
};

int expected_code(bool initialised, const Transform_call& call, const Processor_model* model)
{
    if (!initialised) return NQ_COLOR_MODULE_NOT_INITIALIZED;
    if (call.processor == nullptr) return NQ_COLOR_NULL_INSTANCE_HANDLE;
    if (call.input == nullptr) return NQ_COLOR_NULL_INPUT_BUFFER;
    if (call.output == nullptr) return NQ_COLOR_NULL_OUTPUT_BUFFER;
    if (static_cast<const void*>(call.input) == call.output) {
        return NQ_COLOR_IDENTICAL_INPUT_AND_OUTPUT_BUFFERS;
    }
    if (call.input_format > 2) return NQ_COLOR_INVALID_INPUT_FORMAT;
    for (int32_t shift : call.shift) {
        if (shift < -15 || shift > 15) return NQ_COLOR_INVALID_SHIFT_DISTANCE;
    }
    for (int c = 0; c < 3; ++c) {
        const bool beyond_table =
            model->output_table_enabled[c] && call.clamp_max[c] >= model->output_table_size;
        if (beyond_table || call.clamp_max[c] < call.clamp_min[c]) return NQ_COLOR_INVALID_CLAMP_VALUE;
    }
    if (call.output_format > 2) return NQ_COLOR_INVALID_OUTPUT_FORMAT;
    return NQ_COLOR_NO_ERROR;
}

class Fuzzer {
public:
    explicit Fuzzer(uint32_t seed) : m_random(seed) {}

    // Mostly valid values, now and then one from the edges.
    int32_t format() { return one_in(10) ? pick({-1, INT_MIN, 3, 4, INT_MAX, -7}) : below(3); }
    int32_t shift() { return one_in(12) ? pick({-16, 16, INT_MIN, INT_MAX, 100}) : below(31) - 15; }
    int32_t pixel_count() { return one_in(20) ? pick({-1, INT_MIN, -67}) : below(most_pixels + 1); }
    int32_t flag() { return pick({0, 0, 1, -1, 256, 65536, INT_MIN, 0x5A}); }
    float coefficient() { return one_in(30) ? pick_float() : static_cast<float>(below(4001) - 2000) / 997; }
    void clamp(const Processor_model& model, int c, uint16_t& min, uint16_t& max)
    {
        const int32_t top = model.output_table_enabled[c] ? model.output_table_size : 65536;
        max = static_cast<uint16_t>(one_in(15) ? pick({top, top - 1, 65535, 0}) : below(top));
        min = static_cast<uint16_t>(one_in(15) ? max + 1 : below(max + 1));
    }
    bool one_in(int n) { return below(n) == 0; }
    int32_t below(int32_t n) { return static_cast<int32_t>(m_random() % static_cast<uint32_t>(n)); }
    template <typename T>
    T pick(std::initializer_list<T> values) { return values.begin()[below(static_cast<int32_t>(values.size()))]; }

private:
    float pick_float() { return pick({1e30f, -1e30f, __builtin_inff(), __builtin_nanf(""), 0.0f, -0.0f}); }
    std::mt19937 m_random;
};

uint32_t fuzz_seed()
{
    const char* chosen = std::getenv("NQ_FUZZ_SEED");
    return chosen != nullptr ? static_cast<uint32_t>(std::strtoul(chosen, nullptr, 0)) : 20261123u;
}

class Argument_fuzz : public testing::Test {
protected:
    // One transform with arguments from the fuzzer; false after the first failed check.
    bool transform(bool initialised, int index)
    {
        const Transform_kind& kind = transform_kinds[m_fuzzer.below(4)];
        Processor_model& model = m_models[m_fuzzer.below(static_cast<int32_t>(m_models.size()))];
        Transform_call call;
        call.processor = m_fuzzer.one_in(64) ? nullptr : model.handle;
        call.input = m_fuzzer.one_in(64) ? nullptr : m_input.data();
        call.output = m_fuzzer.one_in(64) ? nullptr : m_output.data();
        if (m_fuzzer.one_in(64)) call.output = const_cast<uint16_t*>(m_input.data());
        call.input_format = m_fuzzer.format();
        call.output_format = m_fuzzer.format();
        for (int c = 0; c < 3; ++c) {
            call.shift[c] = m_fuzzer.shift();
            m_fuzzer.clamp(model, c, call.clamp_min[c], call.clamp_max[c]);
        }
        call.pixel_count = m_fuzzer.pixel_count();
        for (uint16_t& sample : m_input) sample = static_cast<uint16_t>(m_fuzzer.below(65536));
        const std::vector<uint16_t> input_before = m_input;
        m_output.assign(m_output.size(), sentinel);

        const int code = kind.run(call);
        const int expected = expected_code(initialised, call, &model);
        const std::size_t written =
            code == NQ_COLOR_NO_ERROR && call.output != nullptr ? kind.output_bytes(call.pixel_count) : 0;
        std::size_t first_changed_past = written;
        while (first_changed_past < m_output.size() && m_output[first_changed_past] == sentinel) {
            ++first_changed_past;
        }
        const bool passed = code == expected && m_input == input_before &&
                            first_changed_past == m_output.size();
        EXPECT_TRUE(passed) << "seed " << m_seed << ", call " << index << ": " << kind.name << call
                            << " returned " << code << ", expected " << expected
                            << (m_input == input_before ? "" : "; the input was written")
                            << "; first byte written past the pixels: " << first_changed_past
                            << " (of " << m_output.size() << ", pixels end at " << written << ')';
        return passed;
    }

    // Now and then a configuration call, which the model follows.
    void configure()
    {
        Processor_model& model = m_models[m_fuzzer.below(static_cast<int32_t>(m_models.size()))];
        switch (m_fuzzer.below(4)) {
        case 0: {
            const int32_t flags[3] = {m_fuzzer.flag(), m_fuzzer.flag(), m_fuzzer.flag()};
            ASSERT_EQ(nq_color_enable_output_LUTs(model.handle, flags[0], flags[1], flags[2]), 0);
            for (int c = 0; c < 3; ++c) model.output_table_enabled[c] = flags[c] != 0;
            break;
        }
        case 1:
            ASSERT_EQ(nq_color_enable_input_LUTs(model.handle, m_fuzzer.flag(), m_fuzzer.flag(),
                                                 m_fuzzer.flag()), 0);
            break;
        case 2: {
            float matrix[9];
            for (float& coefficient : matrix) coefficient = m_fuzzer.coefficient();
            ASSERT_EQ(nq_color_append_matrix(model.handle, matrix), 0);
            break;
        }
        default:
            ASSERT_EQ(nq_color_clear_matrix(model.handle), 0);
        }
    }

    uint32_t m_seed = fuzz_seed();
    Fuzzer m_fuzzer{m_seed};
    std::vector<Processor_model> m_models;
    std::vector<uint16_t> m_input = std::vector<uint16_t>(3 * most_pixels);
    std::vector<uint8_t> m_output = std::vector<uint8_t>(8 * most_pixels + 64);
};

TEST_F(Argument_fuzz, EveryCodeIsPredictedAndNothingIsWrittenOutOfTurn)
{
    const auto begin = std::chrono::steady_clock::now();
    Processor_model stale{reinterpret_cast<void*>(0x1000), 1, {true, true, true}};
    m_models = {stale};
    for (int k = 0; k < 200; ++k) ASSERT_TRUE(transform(false, k));  // before initialisation

    ASSERT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR);
    m_models.clear();
    const int depths[][2] = {{16, 16}, {8, 12}, {0, 1}, {12, 8}};
    for (int p = 0; p < 4; ++p) {
        const int vector_level = p == 0 ? -1 : 0;  // the detected level, and the scalar path
        void* handle = make_busy_processor(depths[p][0], depths[p][1], vector_level, p);
        ASSERT_NE(handle, nullptr);
        m_models.push_back({handle, 1 << depths[p][1], {true, true, true}});
    }
    int calls = 0;
    for (; calls < transform_calls; ++calls) {
        if (m_fuzzer.one_in(16)) configure();
        if (!transform(true, calls)) break;
    }
    for (const Processor_model& model : m_models) nq_color_destroy_color_processor(model.handle);
    nq_color_processing_module_terminate();
    for (int k = 0; k < 200; ++k) ASSERT_TRUE(transform(false, k));  // stale handles after the end

    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    std::printf("seed %u: %d transform calls in %.2f s\n", m_seed, calls + 400, seconds);
    EXPECT_EQ(calls, transform_calls);
}

}  // namespace
