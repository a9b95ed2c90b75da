// Direct calls of a built vector library's entry points beside the scalar engine, on records
// that a test makes itself.
#pragma once

#include "transform_case.hpp"
#include "vector_test_support.hpp"

#include <corvane_xvr_color_processing_vector.h>

#include "modules/shared_library.hpp"
#include "scalar_engine/scalar_process.hpp"

#include <algorithm>

namespace vector_test {

// A built library opened by its path, through the loader the core uses.
struct Vector_library {
    explicit Vector_library(int level)
        : library(Shared_library::open_file(level == 2 ? NQ_AVX2_LIBRARY_FILE : NQ_SSE_LIBRARY_FILE))
    {
        const nq_vector_library_names& names = nq_vector_library_names_of_level(level);
        if (!library) return;
        library.bind(initialize, names.initialize);
        library.bind(transform_8, names.transform_8_bit_output);
        library.bind(transform_16, names.transform_16_bit_output);
        library.bind(terminate, names.terminate);
    }
    bool complete() const { return initialize && transform_8 && transform_16 && terminate; }
    int transform(const Transform_arguments<uint8_t>& record) const { return transform_8(&record); }
    int transform(const Transform_arguments<uint16_t>& record) const { return transform_16(&record); }

    Shared_library library;
    nq_vector_module_initialize_function* initialize = nullptr;
    nq_vector_transform_8_bit_output_function* transform_8 = nullptr;
    nq_vector_transform_16_bit_output_function* transform_16 = nullptr;
    nq_vector_module_terminate_function* terminate = nullptr;
};

// Tables of random 32-bit entries.
inline Table_set random_tables(uint32_t seed)
{
    Table_set tables;
    Sample_source(seed).fill_tables(tables.tables);
    return tables;
}

// A transform of the options over the pixels; full clamp ranges, shifts 7 and -9.
template <typename T>
struct Options_case : Transform_case<T> {
    Options_case(const Options& o, const std::vector<uint16_t>& pixels, const float* coefficients, int32_t n,
                 const Table_set& tables)
        : Transform_case<T>(n, tables)
    {
        const int32_t distances[3] = {0, 7, -9};
        this->input = pixels;
        std::copy_n(coefficients, 9, this->matrix.begin());
        apply_options(o, this->arguments);
        this->arguments.blue_shift_distance = distances[o.shift_state[0]];
        this->arguments.green_shift_distance = distances[o.shift_state[1]];
        this->arguments.red_shift_distance = distances[o.shift_state[2]];
    }
};

}  // namespace vector_test
