// Every one of the 62,208 kernels, reached through the dispatch, against the reference. The
// combinations are read from the build's list of kernel units (that the list holds each unit
// once, the link and the check of the dispatch's top show).
#include "reference_pipeline.hpp"
#include "sample_source.hpp"
#include "transform_options.hpp"
#include "transform_case.hpp"

#include "scalar_engine/scalar_process.hpp"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <vector>

namespace {

// Matrices chosen to reach ordinary results, exact halves, negative and out-of-range sums,
// NaN and infinities, and sums whose rounding needs the extended significand.
const float two_to_60 = 1152921504606846976.0f;
const float two_to_40 = 1099511627776.0f;
const float two_to_minus_60 = 8.673617379884035e-19f;

const std::array<std::array<float, 9>, 7> matrices = {{
    {0.299f, 0.587f, 0.114f, -0.169f, -0.331f, 0.5f, 0.5f, -0.419f, -0.081f},
    {0.5f, 0.25f, 0.25f, 1.5f, -0.5f, 0.0f, 0.0f, 0.0f, 1.0f},
    {40000.0f, -30000.0f, 50000.0f, -65536.0f, 1.0f, 0.0f, 32768.5f, 32768.5f, 1.0f},
    {std::numeric_limits<float>::quiet_NaN(), 1.0f, 0.0f, std::numeric_limits<float>::infinity(), 0.0f,
     0.0f, 0.0f, 1.0f, -std::numeric_limits<float>::infinity()},
    {1e-8f, 1.0f, 3.0f, 0.1f, 0.2f, 0.7f, 1.00000012f, -0.99999994f, 0.33333334f},
    {1.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f},
    // On grey pixels the large terms cancel: the residue survives only in the 64-bit
    // significand (rows 1 and 3), and row 2 lands within 2^-60 below an integer, where the
    // rounding to double decides the result.
    {two_to_60, 0.75f, -two_to_60, 1.5f, -two_to_minus_60, 0.0f, two_to_40, 1.25f, -two_to_40},
}};

// The kernel units as the build lists them: sample size, input format, six table flags.
struct Kernel_unit {
    std::size_t sample_size;
    std::array<int, 7> decisions;
};
#define NQ_KERNEL_UNIT(T, F, B1, B2, B3, B4, B5, B6) Kernel_unit{sizeof(T), {F, B1, B2, B3, B4, B5, B6}},
const Kernel_unit kernel_units[] = {
#include "kernel_family_units.inc"
};
#undef NQ_KERNEL_UNIT

// Every combination of one sample type, unit by unit from the build's list, then the 162
// decisions each unit takes itself.
std::vector<Options> combinations_of(std::size_t sample_size)
{
    std::vector<Options> all;
    for (const Kernel_unit& unit : kernel_units) {
        if (unit.sample_size != sample_size) continue;
        const auto& d = unit.decisions;
        for (int rest = 0; rest < 162; ++rest) {
            all.push_back(Options{d[0], rest % 3, {d[1] != 0, d[2] != 0, d[3] != 0}, {d[4] != 0, d[5] != 0, d[6] != 0},
                                  {rest / 54 % 3, rest / 18 % 3, rest / 6 % 3}, rest / 3 % 2 != 0, sample_size == 1});
        }
    }
    return all;
}

class Sweep : public Sample_source {
public:
    using Sample_source::Sample_source;

    // Format 0 is also written as values the dispatch must take as 0.
    NQ_COLOR_FORMAT format_value(int format)
    {
        if (format != 0) return static_cast<NQ_COLOR_FORMAT>(format);
        const int32_t planar_spellings[3] = {0, -1, 7};
        return static_cast<NQ_COLOR_FORMAT>(planar_spellings[uniform(0, 2)]);
    }

    int32_t shift_distance(int state)
    {
        // Beyond the -15..15 that the transform calls allow, to check the modulo-32 rule.
        if (state == 1) return uniform(1, 40);
        if (state == 2) return uniform(-40, -1);
        return 0;
    }

    template <typename T>
    void fill(Transform_case<T>& test, const Options& c, int matrix_index)
    {
        const int32_t n = static_cast<int32_t>(test.input.size() / 3);
        test.input = pixels(n, c.input_format);
        test.input.resize(3 * static_cast<std::size_t>(n));
        test.matrix = matrices[static_cast<std::size_t>(matrix_index)];
        Transform_arguments<T>& a = test.arguments;
        apply_options(c, a);
        a.input_buffer_format = format_value(c.input_format);
        a.output_buffer_format = format_value(c.output_format);
        a.blue_shift_distance = shift_distance(c.shift_state[0]);
        a.green_shift_distance = shift_distance(c.shift_state[1]);
        a.red_shift_distance = shift_distance(c.shift_state[2]);
        clamp_bounds(a.blue_clamp_min, a.blue_clamp_max);
        clamp_bounds(a.green_clamp_min, a.green_clamp_max);
        clamp_bounds(a.red_clamp_min, a.red_clamp_max);
    }
};

template <typename T>
void sweep_all_combinations(uint32_t seed)
{
    Sweep sweep(seed);
    // Distinct tables per channel catch a table applied to the wrong channel; identical input
    // tables keep grey pixels grey through the input stage.
    Table_set distinct_tables, same_input_tables;
    sweep.fill_tables(distinct_tables.tables);
    sweep.fill_tables(same_input_tables.tables);
    same_input_tables.tables[1] = same_input_tables.tables[2] = same_input_tables.tables[0];
    const std::vector<Options> combinations = combinations_of(sizeof(T));
    for (int index = 0; index < static_cast<int>(combinations.size()); ++index) {
        const Options& c = combinations[static_cast<std::size_t>(index)];
        const int32_t pixel_count = sweep.uniform(1, 9);
        const bool distinct = (index / static_cast<int>(matrices.size())) % 2 == 0;
        Transform_case<T> test(pixel_count, distinct ? distinct_tables : same_input_tables);
        sweep.fill(test, c, index % static_cast<int>(matrices.size()));

        const int start = sweep.uniform(0, 3) == 0 ? sweep.uniform(0, pixel_count) : 0;
        scalar_process(test.for_engine(), start);
        reference::process(test.for_reference(), start);
        ASSERT_EQ(test.engine_output, test.reference_output)
            << describe(c) << ", pixels " << pixel_count << ", start " << start << ", matrix "
            << index % static_cast<int>(matrices.size());
    }
}

TEST(KernelFamilySweep, EverySixteenBitKernelMatchesTheReference)
{
    sweep_all_combinations<unsigned short>(20261121u);
}

TEST(KernelFamilySweep, EveryEightBitKernelMatchesTheReference)
{
    sweep_all_combinations<unsigned char>(11212026u);
}

}  // namespace
