// Direct calls of a built vector library's entry points beside the scalar engine, on records
// that a test makes itself.
#pragma once

#include "vector_test_support.hpp"

#include <corvane_xvr_color_processing_vector.h>

#include "scalar_engine/scalar_process.hpp"

#include <dlfcn.h>

#include <array>
#include <type_traits>

namespace vector_test {

// A built library opened by its path (never closed: the test process ends first).
struct Vector_library {
    explicit Vector_library(int level)
    {
        const bool avx2 = level == 2;
        void* library = dlopen(avx2 ? NQ_AVX2_LIBRARY_FILE : NQ_SSE_LIBRARY_FILE, RTLD_NOW);
        auto bind = [library](auto*& entry, const char* name) {
            entry = library ? reinterpret_cast<std::remove_reference_t<decltype(entry)>>(dlsym(library, name)) : nullptr;
        };
        bind(initialize, avx2 ? NQ_VECTOR_AVX2_INITIALIZE_NAME : NQ_VECTOR_SSE_INITIALIZE_NAME);
        bind(transform_8, avx2 ? NQ_VECTOR_AVX2_TRANSFORM_8_BIT_OUTPUT_NAME : NQ_VECTOR_SSE_TRANSFORM_8_BIT_OUTPUT_NAME);
        bind(transform_16, avx2 ? NQ_VECTOR_AVX2_TRANSFORM_16_BIT_OUTPUT_NAME : NQ_VECTOR_SSE_TRANSFORM_16_BIT_OUTPUT_NAME);
        bind(terminate, avx2 ? NQ_VECTOR_AVX2_TERMINATE_NAME : NQ_VECTOR_SSE_TERMINATE_NAME);
    }
    bool complete() const { return initialize && transform_8 && transform_16 && terminate; }
    int transform(const Transform_arguments<uint8_t>& record) const { return transform_8(&record); }
    int transform(const Transform_arguments<uint16_t>& record) const { return transform_16(&record); }

    nq_vector_module_initialize_function* initialize;
    nq_vector_transform_8_bit_output_function* transform_8;
    nq_vector_transform_16_bit_output_function* transform_16;
    nq_vector_module_terminate_function* terminate;
};

// Blue, green, red input tables, then blue, green, red output tables, of random 32-bit entries.
using Tables = std::array<std::vector<LUT_entry>, 6>;

inline Tables random_tables(uint32_t seed)
{
    Tables tables;
    for (auto& table : tables) table.resize(65536);
    Sample_source(seed).fill_tables(tables);
    return tables;
}

// A record of the options over the given buffers; full clamp ranges, shifts 7 and -9.
template <typename T>
Transform_arguments<T> record_for(const Options& o, const uint16_t* input, const float* matrix,
                                  const std::array<const LUT_entry*, 6>& tables, int32_t pixel_count, T* output)
{
    const int32_t distances[3] = {0, 7, -9};
    Transform_arguments<T> a{};
    apply_options(o, a);
    a.input_buffer = input;
    a.blue_input_LUT = tables[0], a.green_input_LUT = tables[1], a.red_input_LUT = tables[2];
    a.matrix = matrix;
    a.blue_clamp_max = a.green_clamp_max = a.red_clamp_max = 65535;
    a.blue_output_LUT = tables[3], a.green_output_LUT = tables[4], a.red_output_LUT = tables[5];
    a.blue_shift_distance = distances[o.shift_state[0]];
    a.green_shift_distance = distances[o.shift_state[1]];
    a.red_shift_distance = distances[o.shift_state[2]];
    a.output_buffer = output;
    a.pixel_count = pixel_count;
    return a;
}

inline std::array<const LUT_entry*, 6> pointers(const Tables& tables)
{
    std::array<const LUT_entry*, 6> result{};
    for (std::size_t t = 0; t < 6; ++t) result[t] = tables[t].data();
    return result;
}

inline std::size_t output_samples(const Options& o, int32_t pixel_count)
{
    return (o.fourth_channel ? 4u : 3u) * static_cast<std::size_t>(pixel_count > 0 ? pixel_count : 0);
}

}  // namespace vector_test
