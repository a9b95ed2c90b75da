// Direct calls of a vector library's entry points, beside the scalar engine on the same record:
// a built library opened by its path, and one transform case that owns its buffers.
#pragma once

#include "vector_test_support.hpp"

#include <corvane_xvr_color_processing_vector.h>

#include "scalar_engine/scalar_process.hpp"

#include <dlfcn.h>

#include <array>
#include <cstdint>
#include <vector>

namespace vector_test {

class Vector_library {
public:
    explicit Vector_library(int level) : m_handle(dlopen(level == 2 ? NQ_AVX2_LIBRARY_FILE : NQ_SSE_LIBRARY_FILE, RTLD_NOW))
    {
        if (m_handle == nullptr) return;
        const bool avx2 = level == 2;
        m_initialize = bind<nq_vector_module_initialize_function>(avx2 ? NQ_VECTOR_AVX2_INITIALIZE_NAME
                                                                       : NQ_VECTOR_SSE_INITIALIZE_NAME);
        m_transform_8 = bind<nq_vector_transform_8_bit_output_function>(
            avx2 ? NQ_VECTOR_AVX2_TRANSFORM_8_BIT_OUTPUT_NAME : NQ_VECTOR_SSE_TRANSFORM_8_BIT_OUTPUT_NAME);
        m_transform_16 = bind<nq_vector_transform_16_bit_output_function>(
            avx2 ? NQ_VECTOR_AVX2_TRANSFORM_16_BIT_OUTPUT_NAME : NQ_VECTOR_SSE_TRANSFORM_16_BIT_OUTPUT_NAME);
        m_terminate = bind<nq_vector_module_terminate_function>(avx2 ? NQ_VECTOR_AVX2_TERMINATE_NAME
                                                                     : NQ_VECTOR_SSE_TERMINATE_NAME);
    }
    ~Vector_library()
    {
        if (m_handle != nullptr) dlclose(m_handle);
    }
    Vector_library(const Vector_library&) = delete;
    Vector_library& operator=(const Vector_library&) = delete;

    bool complete() const { return m_initialize && m_transform_8 && m_transform_16 && m_terminate; }
    int initialize() const { return m_initialize(); }
    void terminate() const { m_terminate(); }
    int transform(const Transform_arguments<uint8_t>& record) const { return m_transform_8(&record); }
    int transform(const Transform_arguments<uint16_t>& record) const { return m_transform_16(&record); }

private:
    template <typename Function>
    Function* bind(const char* name) const
    {
        return reinterpret_cast<Function*>(dlsym(m_handle, name));
    }

    void* m_handle;
    nq_vector_module_initialize_function* m_initialize = nullptr;
    nq_vector_transform_8_bit_output_function* m_transform_8 = nullptr;
    nq_vector_transform_16_bit_output_function* m_transform_16 = nullptr;
    nq_vector_module_terminate_function* m_terminate = nullptr;
};

// Blue, green, red input tables, then blue, green, red output tables, of random 32-bit entries.
struct Table_set {
    explicit Table_set(uint32_t seed)
    {
        std::mt19937 random(seed);
        for (auto& table : tables) {
            table.resize(65536);
            for (auto& entry : table) entry = static_cast<int32_t>(random());
        }
    }
    std::array<std::vector<LUT_entry>, 6> tables;
};

// A record over the given input, matrix and tables; output buffers are the caller's.
template <typename T>
Transform_arguments<T> record_for(const Options& o, const uint16_t* input, const float* matrix,
                                  const std::array<const LUT_entry*, 6>& tables, int32_t pixel_count)
{
    Transform_arguments<T> a{};
    a.input_buffer = input;
    a.input_buffer_format = static_cast<NQ_COLOR_FORMAT>(o.input_format);
    a.blue_input_LUT = tables[0];
    a.green_input_LUT = tables[1];
    a.red_input_LUT = tables[2];
    a.blue_input_LUT_enabled = o.input_LUT[0];
    a.green_input_LUT_enabled = o.input_LUT[1];
    a.red_input_LUT_enabled = o.input_LUT[2];
    a.matrix = matrix;
    a.blue_clamp_max = a.green_clamp_max = a.red_clamp_max = 65535;
    a.blue_output_LUT = tables[3];
    a.green_output_LUT = tables[4];
    a.red_output_LUT = tables[5];
    a.blue_output_LUT_enabled = o.output_LUT[0];
    a.green_output_LUT_enabled = o.output_LUT[1];
    a.red_output_LUT_enabled = o.output_LUT[2];
    const int32_t distances[3] = {0, 7, -9};
    a.blue_shift_distance = distances[o.shift_state[0]];
    a.green_shift_distance = distances[o.shift_state[1]];
    a.red_shift_distance = distances[o.shift_state[2]];
    a.output_buffer_format = static_cast<NQ_COLOR_FORMAT>(o.output_format);
    a.fourth_channel_enabled = o.fourth_channel;
    a.pixel_count = pixel_count;
    return a;
}

inline std::array<const LUT_entry*, 6> pointers(const Table_set& set)
{
    std::array<const LUT_entry*, 6> result{};
    for (std::size_t t = 0; t < 6; ++t) result[t] = set.tables[t].data();
    return result;
}

template <typename T>
std::size_t output_samples(const Transform_arguments<T>& a)
{
    return (a.fourth_channel_enabled ? 4u : 3u) * static_cast<std::size_t>(a.pixel_count);
}

// The library's share, then the scalar engine from where it stopped, as the core does.
template <typename T>
int vector_then_scalar(const Vector_library& library, const Transform_arguments<T>& record)
{
    const int claimed = library.transform(record);
    scalar_process(record, claimed);
    return claimed;
}

}  // namespace vector_test
