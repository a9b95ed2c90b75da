// A transform set up for tests: owns the input, the matrix and two output buffers (one for the
// engine, one for the reference), each filled with the same sentinel so that samples a
// transform must not touch are compared too. The tables live in a Table_set that many cases
// share.
#pragma once

#include "scalar_engine/transform_arguments.hpp"

#include <array>
#include <cstdint>
#include <vector>

// Blue, green, red input tables, then blue, green, red output tables, as in a Table_set.
using Table_pointers = std::array<const LUT_entry*, 6>;

template <typename T>
void attach_tables(Transform_arguments<T>& a, const Table_pointers& t)
{
    a.blue_input_LUT = t[0], a.green_input_LUT = t[1], a.red_input_LUT = t[2];
    a.blue_output_LUT = t[3], a.green_output_LUT = t[4], a.red_output_LUT = t[5];
}

struct Table_set {
    explicit Table_set(std::size_t entries = 65536) { for (auto& t : tables) t.assign(entries, 0); }
    Table_pointers pointers() const
    {
        Table_pointers p{};
        for (std::size_t k = 0; k < p.size(); ++k) p[k] = tables[k].data();
        return p;
    }
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
        attach_tables(arguments, table_set.pointers());
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
