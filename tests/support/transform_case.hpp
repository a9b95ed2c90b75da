// A transform set up for tests: owns the input, the matrix and two output buffers (one for the
// engine, one for the reference), each filled with the same sentinel so that samples a
// transform must not touch are compared too. The tables live in a Table_set that many cases
// share.
#pragma once

#include "scalar_engine/transform_arguments.hpp"

#include <array>
#include <cstdint>
#include <vector>

// Blue, green, red input tables, then blue, green, red output tables.
struct Table_set {
    explicit Table_set(std::size_t entries = 65536) { for (auto& t : tables) t.assign(entries, 0); }
    std::array<std::vector<LUT_entry>, 6> tables;
};

template <typename T>
struct Transform_case {
    static constexpr T sentinel = static_cast<T>(0xA5A5u);

    Transform_case(int32_t pixel_count, const Table_set& table_set)
        : input(3 * non_negative(pixel_count)),
          engine_output(output_samples(pixel_count), sentinel),
          reference_output(output_samples(pixel_count), sentinel),
          matrix{1, 0, 0, 0, 1, 0, 0, 0, 1}
    {
        arguments = Transform_arguments<T>{};
        arguments.blue_input_LUT = table_set.tables[0].data();
        arguments.green_input_LUT = table_set.tables[1].data();
        arguments.red_input_LUT = table_set.tables[2].data();
        arguments.blue_output_LUT = table_set.tables[3].data();
        arguments.green_output_LUT = table_set.tables[4].data();
        arguments.red_output_LUT = table_set.tables[5].data();
        arguments.blue_clamp_max = arguments.green_clamp_max = arguments.red_clamp_max = 65535;
        arguments.pixel_count = pixel_count;
    }
    Transform_case(const Transform_case&) = delete;
    Transform_case& operator=(const Transform_case&) = delete;

    Transform_arguments<T> for_engine() { return bound_to(engine_output); }
    Transform_arguments<T> for_reference() { return bound_to(reference_output); }

    std::vector<uint16_t> input;
    std::vector<T> engine_output;
    std::vector<T> reference_output;
    std::array<float, 9> matrix;
    Transform_arguments<T> arguments;  // buffers and matrix are bound by for_engine/for_reference

private:
    static std::size_t non_negative(int32_t count) { return count > 0 ? static_cast<std::size_t>(count) : 0; }
    // Room for four channels and a guard as wide as the widest vector store beyond the end.
    static std::size_t output_samples(int32_t count) { return 4 * non_negative(count) + 32; }

    Transform_arguments<T> bound_to(std::vector<T>& output)
    {
        Transform_arguments<T> bound = arguments;
        bound.input_buffer = input.data();
        bound.matrix = matrix.data();
        bound.output_buffer = output.data();
        return bound;
    }
};
