// Everything the library is told for one run, worked out from the options and the input
// before the library is touched: table sizes and contents, matrices in append order, clamps
// and shifts per channel and the output depth. Settings that cannot work are refused here
// with a message, so the library never sees a call it would reject and the narrowing to the
// output samples never drops bits.
#pragma once

#include "lookup_tables.hpp"
#include "options.hpp"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace xvr_color {

// Channel settings in the tool's order: red, green, blue.
struct Channel_settings {
    int clamp_min = 0;
    int clamp_max = 65535;
    int shift = 0;
};

struct Correction_plan {
    // Processor table depths: 2^depth entries per table; 0 when the table is not used (the
    // library then keeps a one-entry table that stays disabled).
    int input_table_bits = 0;
    int output_table_bits = 0;
    std::optional<Rgb_tables> input_tables;
    std::optional<Rgb_tables> output_tables;
    std::vector<Matrix> matrices; // in append order: the last one acts on the pixels first
    bool scale_appended = false;  // whether matrices[0] is the tool's scale to a small table
    std::array<Channel_settings, 3> channels;
    int output_bits = 16;
    bool rounding_table = false; // the output table only rounds 16-bit results to 8 bits
    bool keeps_colours = false;  // nothing but the sample depth changes
    std::string input_table_name;  // "none", a curve name or a file name
    std::string output_table_name;
};

// What the plan needs to know about the run besides the options.
struct Run_context {
    bool built_in_chart = false; // no input file: the chart defaults fill unset options
    int input_sample_bits = 16;  // depth of the input file's samples (8 or 16)
};

// Throws Usage_error for settings that do not fit together and Tool_error for table files
// that cannot be used.
Correction_plan make_correction_plan(const Options& options, const Run_context& context);

// Largest value that a channel can store after its clamp, output table and shift; the plan
// refuses a channel whose value exceeds 2^output_bits - 1.
std::int64_t largest_final_value(const Channel_settings& channel, const Lookup_table* output_table);

} // namespace xvr_color
