#include "public_calls.hpp"

#include <gtest/gtest.h>

#include <random>

namespace {

template <typename T, auto TRANSFORM>
int run(const Transform_call& c)
{
    return TRANSFORM(c.processor, c.input, static_cast<NQ_COLOR_FORMAT>(c.input_format),
                     c.clamp_min[0], c.clamp_max[0], c.clamp_min[1], c.clamp_max[1],
                     c.clamp_min[2], c.clamp_max[2], c.shift[0], c.shift[1], c.shift[2],
                     static_cast<T*>(c.output), static_cast<NQ_COLOR_FORMAT>(c.output_format),
                     c.pixel_count);
}

}  // namespace

const Transform_kind transform_kinds[4] = {
    {"nq_color_transform_48_to_48", 2, 3, run<uint16_t, nq_color_transform_48_to_48>},
    {"nq_color_transform_48_to_64", 2, 4, run<uint16_t, nq_color_transform_48_to_64>},
    {"nq_color_transform_48_to_32", 1, 4, run<uint8_t, nq_color_transform_48_to_32>},
    {"nq_color_transform_48_to_24", 1, 3, run<uint8_t, nq_color_transform_48_to_24>},
};

const Table_getter table_getters[6] = {
    nq_color_get_blue_input_LUT,  nq_color_get_green_input_LUT,  nq_color_get_red_input_LUT,
    nq_color_get_blue_output_LUT, nq_color_get_green_output_LUT, nq_color_get_red_output_LUT};

std::ostream& operator<<(std::ostream& stream, const Transform_call& c)
{
    return stream << "(processor " << c.processor << ", input " << c.input << ", format "
                  << c.input_format << ", clamps " << c.clamp_min[0] << ".." << c.clamp_max[0]
                  << ' ' << c.clamp_min[1] << ".." << c.clamp_max[1] << ' ' << c.clamp_min[2]
                  << ".." << c.clamp_max[2] << ", shifts " << c.shift[0] << ' ' << c.shift[1]
                  << ' ' << c.shift[2] << ", output " << c.output << ", format "
                  << c.output_format << ", pixels " << c.pixel_count << ')';
}

Initialised_library::Initialised_library()
{
    EXPECT_EQ(nq_color_processing_module_initialize(), NQ_COLOR_NO_ERROR)
        << "libcorvane_xvr_LUT.so not on the search path";
}

Initialised_library::~Initialised_library()
{
    nq_color_processing_module_terminate();
}

void* make_busy_processor(int input_depth, int output_depth, int vector_level, uint32_t seed)
{
    void* processor = vector_level < 0 ? nq_color_create_color_processor(input_depth, output_depth)
                                       : nq_color_create_color_processor_test(
                                             input_depth, output_depth, vector_level);
    if (processor == nullptr) return nullptr;
    std::mt19937 random(seed);
    for (int table = 0; table < 6; ++table) {
        const int entries = 1 << (table < 3 ? input_depth : output_depth);
        int32_t* data = table_getters[table](processor);
        for (int entry = 0; entry < entries; ++entry) data[entry] = static_cast<int32_t>(random());
    }
    const float matrix[9] = {0.8f, 0.15f, 0.05f, -0.1f, 1.2f, -0.1f, 0.02f, 0.3f, 0.68f};
    nq_color_append_matrix(processor, matrix);
    nq_color_enable_input_LUTs(processor, 1, 1, 1);
    nq_color_enable_output_LUTs(processor, 1, 1, 1);
    return processor;
}
