// What the tests of the public calls share: the four transforms behind one signature, one
// call's arguments (printable, so that a failure names the call) and a valid call, the six table getters, and
// the module held for a test.
#pragma once

#include <corvane_xvr_color_processing.h>

#include <cstddef>
#include <cstdint>
#include <ostream>

// The arguments of one transform call, channel trios blue, green, red; the defaults are valid.
struct Transform_call {
    void* processor = nullptr;
    const uint16_t* input = nullptr;
    int32_t input_format = NQ_COLOR_FORMAT_BGR_PIXEL;
    uint16_t clamp_min[3] = {0, 0, 0};
    uint16_t clamp_max[3] = {65535, 65535, 65535};
    int32_t shift[3] = {0, 0, 0};
    void* output = nullptr;
    int32_t output_format = NQ_COLOR_FORMAT_BGR_PIXEL;
    int32_t pixel_count = 0;
};

std::ostream& operator<<(std::ostream& stream, const Transform_call& call);

// A valid call of `pixel_count` pixels.
inline Transform_call call_of(void* processor, const uint16_t* input, void* output, int32_t pixel_count)
{
    Transform_call call;
    call.processor = processor;
    call.input = input;
    call.output = output;
    call.pixel_count = pixel_count;
    return call;
}

struct Transform_kind {
    const char* name;
    std::size_t sample_bytes;
    std::size_t channels;
    int (*run)(const Transform_call& call);

    std::size_t output_bytes(int32_t pixel_count) const
    {
        return pixel_count > 0 ? sample_bytes * channels * static_cast<std::size_t>(pixel_count) : 0;
    }
};

// 48_to_48, 48_to_64, 48_to_32, 48_to_24.
extern const Transform_kind transform_kinds[4];
inline const Transform_kind& to_48 = transform_kinds[0];
inline const Transform_kind& to_64 = transform_kinds[1];
inline const Transform_kind& to_32 = transform_kinds[2];
inline const Transform_kind& to_24 = transform_kinds[3];

// Blue, green, red input tables, then blue, green, red output tables.
using Table_getter = int32_t* (*)(void*);
extern const Table_getter table_getters[6];

// Initialised for the scope of one test; a processor made in it must be destroyed in it.
class Initialised_library {
public:
    Initialised_library();
    ~Initialised_library();
    Initialised_library(const Initialised_library&) = delete;
    Initialised_library& operator=(const Initialised_library&) = delete;
};

// A processor whose six tables hold pseudo-random entries, all enabled, with a colour matrix.
// Input depths below 16 leave most 16-bit samples past the input tables' ends on purpose.
void* make_busy_processor(int input_depth, int output_depth, int vector_level, uint32_t seed);
