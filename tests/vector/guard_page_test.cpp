// Input buffers, output buffers and all six tables placed against an inaccessible page, at their
// end and at their start, for every input and output layout, both sample widths, with and
// without the fourth channel, and counts that are not multiples of the vector width: a read or
// write outside them faults. The table entries at the last index are used (samples and clamp
// bounds reach 65535), and the output must still equal the scalar engine's.
#include "direct_calls.hpp"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <memory>

namespace {

using namespace vector_test;

// `bytes` of read-write memory with an inaccessible page right after it (AT_END) or right
// before it.
class Guarded_memory {
public:
    enum Placement { at_end, at_start };

    Guarded_memory(std::size_t bytes, Placement placement)
    {
        const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t usable = (bytes + page - 1) / page * page + (bytes == 0 ? page : 0);
        m_length = usable + 2 * page;
        void* mapping = mmap(nullptr, m_length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapping == MAP_FAILED) return;
        m_base = static_cast<uint8_t*>(mapping);
        mprotect(m_base, page, PROT_NONE);
        mprotect(m_base + page + usable, page, PROT_NONE);
        m_data = placement == at_end ? m_base + page + usable - bytes : m_base + page;
    }
    ~Guarded_memory()
    {
        if (m_base != nullptr) munmap(m_base, m_length);
    }
    Guarded_memory(const Guarded_memory&) = delete;
    Guarded_memory& operator=(const Guarded_memory&) = delete;

    template <typename T>
    T* as() const
    {
        return reinterpret_cast<T*>(m_data);
    }

private:
    uint8_t* m_base = nullptr;
    uint8_t* m_data = nullptr;
    std::size_t m_length = 0;
};

// The test's tables copied into guarded memory.
struct Guarded_tables {
    Guarded_tables(const Table_set& set, Guarded_memory::Placement placement)
    {
        for (std::size_t t = 0; t < 6; ++t) {
            memory[t] = std::make_unique<Guarded_memory>(65536 * sizeof(LUT_entry), placement);
            std::memcpy(memory[t]->as<LUT_entry>(), set.tables[t].data(), 65536 * sizeof(LUT_entry));
            data[t] = memory[t]->as<LUT_entry>();
        }
    }
    std::array<std::unique_ptr<Guarded_memory>, 6> memory;
    std::array<const LUT_entry*, 6> data{};
};

template <typename T>
void check_guarded(const Vector_library& library, const Options& o, const std::vector<uint16_t>& pixels,
                   const std::array<float, 9>& matrix, const Table_set& tables, const Guarded_tables& guarded,
                   Guarded_memory::Placement placement)
{
    const int32_t n = static_cast<int32_t>(pixels.size() / 3);
    Transform_arguments<T> expected_record = record_for<T>(o, pixels.data(), matrix.data(), pointers(tables), n);
    std::vector<T> expected(output_samples(expected_record));
    expected_record.output_buffer = expected.data();
    scalar_process(expected_record, 0);

    Guarded_memory input(pixels.size() * sizeof(uint16_t), placement);
    Guarded_memory output(expected.size() * sizeof(T), placement);
    std::memcpy(input.as<uint16_t>(), pixels.data(), pixels.size() * sizeof(uint16_t));
    Transform_arguments<T> record = record_for<T>(o, input.as<uint16_t>(), matrix.data(), guarded.data, n);
    record.output_buffer = output.as<T>();
    vector_then_scalar(library, record);
    EXPECT_EQ(std::memcmp(output.as<T>(), expected.data(), expected.size() * sizeof(T)), 0) << describe(o);
}

class Guard_pages : public testing::TestWithParam<int> {};

TEST_P(Guard_pages, NoAccessOutsideBuffersAndTablesInAnyLayout)
{
    const int level = GetParam();
    if (!processor_runs_level(level)) {
        GTEST_SKIP() << "this processor cannot run the " << level_name(level) << " library";
    }
    Vector_library library(level);
    ASSERT_TRUE(library.complete());
    ASSERT_EQ(library.initialize(), 0);
    const int32_t width = vector_width(level);
    const std::array<float, 9> matrix = {0.9f, 0.05f, 0.05f, 0.1f, 0.8f, 0.1f, 0.0f, 0.3f, 0.7f};
    const Table_set tables(3u);
    Sample_source source(11u);
    for (const auto placement : {Guarded_memory::at_end, Guarded_memory::at_start}) {
        const Guarded_tables guarded(tables, placement);
        for (int layouts = 0; layouts < 9 * 2 * 2; ++layouts) {
            for (const int32_t n : {1, width - 1, width + 1, 2 * width + 3, 37, 255}) {
                Options o = decode_options(source.uniform(0, option_combinations - 1));
                o.input_format = layouts % 3;
                o.output_format = layouts / 3 % 3;
                o.fourth_channel = layouts / 9 % 2 != 0;
                o.eight_bit = layouts / 18 != 0;
                std::vector<uint16_t> pixels = source.pixels(n, o.input_format);
                pixels.back() = 65535;  // the last entry of the last input table
                if (o.eight_bit) {
                    check_guarded<uint8_t>(library, o, pixels, matrix, tables, guarded, placement);
                } else {
                    check_guarded<uint16_t>(library, o, pixels, matrix, tables, guarded, placement);
                }
            }
        }
    }
    library.terminate();
}

INSTANTIATE_TEST_SUITE_P(Level, Guard_pages, testing::Values(1, 2),
                         [](const testing::TestParamInfo<int>& parameter) { return std::string(level_name(parameter.param)); });

}  // namespace
