// Buffers that end exactly where an inaccessible page begins: every transform, every input and
// output layout, every pixel count from 1 to 67 (all remainders of any vector width a vector
// library may use). A read or write one byte past either buffer faults. The output must also
// equal that of a processor confined to the scalar path, with ordinary buffers.
#include "public_calls.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int32_t most_pixels = 67;

// Readable and writable pages followed by one page that is neither.
class Guarded_pages {
public:
    explicit Guarded_pages(std::size_t bytes)
        : m_page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
          m_usable((bytes + m_page - 1) / m_page * m_page)
    {
        void* memory = mmap(nullptr, m_usable + m_page, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        m_memory = memory == MAP_FAILED ? nullptr : static_cast<uint8_t*>(memory);
        if (m_memory != nullptr) mprotect(m_memory + m_usable, m_page, PROT_NONE);
    }
    ~Guarded_pages()
    {
        if (m_memory != nullptr) munmap(m_memory, m_usable + m_page);
    }
    Guarded_pages(const Guarded_pages&) = delete;
    Guarded_pages& operator=(const Guarded_pages&) = delete;

    // The last `bytes` bytes before the inaccessible page.
    uint8_t* ending(std::size_t bytes) const { return m_memory + m_usable - bytes; }
    bool usable() const { return m_memory != nullptr; }

private:
    std::size_t m_page;
    std::size_t m_usable;
    uint8_t* m_memory = nullptr;
};

TEST(Guard_pages, NoTransformReadsOrWritesPastItsBuffers)
{
    const Initialised_library library;
    // Input depth 10: most samples lie past the input tables' ends as well.
    void* processor = make_busy_processor(10, 12, -1, 1);
    void* scalar_processor = make_busy_processor(10, 12, 0, 1);
    ASSERT_NE(processor, nullptr);
    ASSERT_NE(scalar_processor, nullptr);
    const Guarded_pages input_pages(3 * 2 * most_pixels), output_pages(4 * 2 * most_pixels);
    ASSERT_TRUE(input_pages.usable() && output_pages.usable());

    std::mt19937 random(67);
    std::vector<uint16_t> samples(3 * most_pixels);
    for (uint16_t& sample : samples) sample = static_cast<uint16_t>(random());
    int transforms = 0;
    for (const Transform_kind& kind : transform_kinds) {
        for (int32_t input_format = 0; input_format < 3; ++input_format) {
            for (int32_t output_format = 0; output_format < 3; ++output_format) {
                for (int32_t n = 1; n <= most_pixels; ++n) {
                    Transform_call call;
                    const std::size_t output_bytes = kind.output_bytes(n);
                    auto* input = reinterpret_cast<uint16_t*>(input_pages.ending(3 * 2 * n));
                    std::memcpy(input, samples.data(), 3 * 2 * n);
                    call.input = input;
                    call.input_format = input_format;
                    call.output_format = output_format;
                    call.clamp_max[0] = call.clamp_max[1] = call.clamp_max[2] = 4095;
                    call.shift[1] = -4;
                    call.pixel_count = n;
                    std::vector<uint8_t> expected(output_bytes);
                    call.processor = scalar_processor;
                    call.output = expected.data();
                    ASSERT_EQ(kind.run(call), NQ_COLOR_NO_ERROR) << kind.name << call;
                    call.processor = processor;
                    call.output = output_pages.ending(output_bytes);
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
