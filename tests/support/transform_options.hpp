// The options of one transform that select its kernel, decoded from an index over all 62,208
// combinations, and applied to a record.
#pragma once

#include <sstream>
#include <string>

constexpr int option_combinations = 3 * 64 * 27 * 2 * 3 * 2;

struct Options {
    int input_format, output_format;
    bool input_LUT[3], output_LUT[3];  // blue, green, red
    int shift_state[3];                // 0 none, 1 left, 2 right
    bool fourth_channel, eight_bit;
};

inline Options decode_options(int index)
{
    Options o{};
    auto take = [&index](int values) { const int value = index % values; index /= values; return value; };
    o.eight_bit = take(2) != 0;
    o.output_format = take(3);
    o.fourth_channel = take(2) != 0;
    for (int& state : o.shift_state) state = take(3);
    for (bool& flag : o.output_LUT) flag = take(2) != 0;
    for (bool& flag : o.input_LUT) flag = take(2) != 0;
    o.input_format = take(3);
    return o;
}

inline std::string describe(const Options& o)
{
    std::ostringstream text;
    text << "in " << o.input_format << " tables " << o.input_LUT[0] << o.input_LUT[1] << o.input_LUT[2] << "/"
         << o.output_LUT[0] << o.output_LUT[1] << o.output_LUT[2] << " shifts " << o.shift_state[0]
         << o.shift_state[1] << o.shift_state[2] << " fourth " << o.fourth_channel << " out " << o.output_format
         << (o.eight_bit ? " 8-bit" : " 16-bit");
    return text.str();
}

// The options' layouts, table switches and fourth channel in a record; shifts and clamps are
// left to the caller.
template <typename Arguments>
void apply_options(const Options& o, Arguments& a)
{
    a.input_buffer_format = static_cast<decltype(a.input_buffer_format)>(o.input_format);
    a.output_buffer_format = static_cast<decltype(a.output_buffer_format)>(o.output_format);
    a.blue_input_LUT_enabled = o.input_LUT[0], a.green_input_LUT_enabled = o.input_LUT[1];
    a.red_input_LUT_enabled = o.input_LUT[2];
    a.blue_output_LUT_enabled = o.output_LUT[0], a.green_output_LUT_enabled = o.output_LUT[1];
    a.red_output_LUT_enabled = o.output_LUT[2];
    a.fourth_channel_enabled = o.fourth_channel;
}
