// Buffers that end exactly where an inaccessible page begins: every transform, every input and
// output layout, every pixel count from 1 to 67 (all remainders of any vector width a vector
// library may use). A read or write one byte past either buffer faults. The output must also
// equal that of a processor confined to the scalar path, with ordinary buffers.
#include "guarded_memory.hpp"
#include "public_calls.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr int32_t most_pixels = 67;

TEST(Guard_pages, NoTransformReadsOrWritesPastItsBuffers)
{
    const Initialised_library library;
    // Input depth 10: most samples lie past the input tables' ends as well.
    void* processor = make_busy_processor(10, 12, -1, 1);
    void* scalar_processor = make_busy_processor(10, 12, 0, 1);
    ASSERT_NE(processor, nullptr);
    ASSERT_NE(scalar_processor, nullptr);
    const Guarded_memory input_pages(3 * 2 * most_pixels), output_pages(4 * 2 * most_pixels);
    ASSERT_TRUE(input_pages.usable() && output_pages.usable());

    std::mt19937 random(67);
    std::vector<uint16_t> samples(3 * most_pixels);
    for (uint16_t& sample : samples) sample = static_cast<uint16_t>(random());
    int transforms = 0;
    for (const Transform_kind& kind : transform_kinds) {
        for (int32_t input_format = 0; input_format < 3; ++input_format) {
            for (int32_t output_format = 0; output_format < 3; ++output_format) {
                for (int32_t n = 1; n <= most_pixels; ++n) {
                    const std::size_t output_bytes = kind.output_bytes(n);
                    auto* input = reinterpret_cast<uint16_t*>(input_pages.placed(3 * 2 * n));
                    std::memcpy(input, samples.data(), 3 * 2 * n);
                    std::vector<uint8_t> expected(output_bytes);
                    Transform_call call = call_of(scalar_processor, input, expected.data(), n);
                    call.input_format = input_format;
                    call.output_format = output_format;
                    call.clamp_max[0] = call.clamp_max[1] = call.clamp_max[2] = 4095;
                    call.shift[1] = -4;
                    ASSERT_EQ(kind.run(call), NQ_COLOR_NO_ERROR) << kind.name << call;
                    call.processor = processor;
                    call.output = output_pages.placed(output_bytes);
                    ASSERT_EQ(kind.run(call), NQ_COLOR_NO_ERROR) << kind.name << call;
                    ASSERT_EQ(std::memcmp(call.output, expected.data(), output_bytes), 0)
                        << kind.name << call;
                    ++transforms;
                }
            }
        }
    }
    EXPECT_EQ(transforms, 4 * 9 * most_pixels);
    nq_color_destroy_color_processor(scalar_processor);
    nq_color_destroy_color_processor(processor);
}

}  // namespace
