#include "correction_plan.hpp"

#include "chart_defaults.hpp"
#include "table_files.hpp"
#include "tool_error.hpp"

#include <algorithm>

namespace xvr_color {

namespace {

const char* const channel_names[3] = {"red", "green", "blue"};

std::int32_t largest_sample(int bits)
{
    return (1 << bits) - 1;
}

// 8-bit output without a table of the user's rounds the 16-bit result to the nearest 8-bit
// value through a linear table, as other image tools do: entry i = round(255 x i / 65535), the
// nearest of i / 257 (never a tie, since 257 is odd). A --shift asks for the old cut instead.
bool rounds_to_8_bits(const Options& options, const Correction_plan& plan)
{
    return plan.output_bits == 8 && !options.shift;
}

Table_choice chosen_output_table(const Options& options, const Run_context& context,
                                 const Correction_plan& plan)
{
    if (options.output_table) {
        return *options.output_table;
    }
    Table_choice choice;
    if (context.built_in_chart) {
        choice.source = Table_choice::Source::curve;
        choice.curve = default_chart_output_curve();
    } else if (rounds_to_8_bits(options, plan)) {
        choice.source = Table_choice::Source::curve;
        choice.curve = parse_curve("linear");
    }
    return choice;
}

std::string table_name(const Table_choice& choice)
{
    switch (choice.source) {
    case Table_choice::Source::none:
        return "none";
    case Table_choice::Source::curve:
        return choice.curve.name();
    case Table_choice::Source::file:
        return choice.path;
    }
    return "?";
}

void plan_input_tables(const Options& options, Correction_plan& plan)
{
    const Table_choice choice = options.input_table.value_or(Table_choice{});
    plan.input_table_name = table_name(choice);
    if (choice.source == Table_choice::Source::none) {
        return;
    }
    plan.input_table_bits = 16;
    if (choice.source == Table_choice::Source::curve) {
        plan.input_tables = same_table_for_each_channel(make_input_table(choice.curve));
    } else {
        const Table_shape shape{input_table_entries, input_table_max_value, "the input table"};
        plan.input_tables = read_table_file(choice.path, shape);
    }
}

void plan_output_tables(const Options& options, const Run_context& context,
                        Correction_plan& plan)
{
    const Table_choice choice = chosen_output_table(options, context, plan);
    plan.output_table_name = table_name(choice);
    plan.rounding_table = !options.output_table && !context.built_in_chart && rounds_to_8_bits(options, plan);
    if (plan.rounding_table) {
        plan.output_table_name = "rounding to 8 bits";
    }
    if (choice.source == Table_choice::Source::none) {
        return;
    }
    plan.output_table_bits = options.output_table_bits;
    const std::size_t entries = std::size_t(1) << plan.output_table_bits;
    const std::int32_t sample_max = largest_sample(plan.output_bits);
    if (choice.source == Table_choice::Source::curve) {
        plan.output_tables = same_table_for_each_channel(
            make_output_table(choice.curve, entries, sample_max));
    } else if (is_cube_file_name(choice.path)) {
        plan.output_tables = read_table_file(choice.path, {entries, sample_max, "the output table"});
    } else {
        // Raw entries may be wider than a sample when a right shift follows them.
        plan.output_tables =
            read_table_file(choice.path, {entries, 0x7fffffff, "the output table"});
    }
}

// A table smaller than 65536 entries is indexed by a scaled matrix result; the scale is
// appended first so that it acts after every matrix of the command line.
void plan_matrices(const Options& options, const Run_context& context, Correction_plan& plan)
{
    if (plan.output_tables && plan.output_table_bits < 16) {
        const float scale = static_cast<float>(largest_sample(plan.output_table_bits) / 65535.0);
        plan.matrices.push_back(Matrix{scale, 0, 0, 0, scale, 0, 0, 0, scale});
        plan.scale_appended = true;
    }
    if (!options.matrices.empty()) {
        plan.matrices.insert(plan.matrices.end(), options.matrices.begin(), options.matrices.end());
    } else if (context.built_in_chart) {
        plan.matrices.push_back(default_chart_matrix());
    }
}

void plan_clamps(const Options& options, Correction_plan& plan)
{
    const int index_max = plan.output_tables ? largest_sample(plan.output_table_bits) : 65535;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        Channel_settings& settings = plan.channels[channel];
        if (!options.clamp) {
            settings.clamp_min = 0;
            settings.clamp_max = index_max;
            continue;
        }
        settings.clamp_min = (*options.clamp)[channel].min;
        settings.clamp_max = (*options.clamp)[channel].max;
        if (settings.clamp_min > settings.clamp_max) {
            throw Usage_error(std::string("--clamp: the ") + channel_names[channel] +
                              " minimum " + std::to_string(settings.clamp_min) +
                              " is above its maximum " + std::to_string(settings.clamp_max));
        }
        if (settings.clamp_max > index_max) {
            throw Usage_error(std::string("--clamp: the ") + channel_names[channel] +
                              " maximum " + std::to_string(settings.clamp_max) +
                              " is beyond the last entry (" + std::to_string(index_max) +
                              ") of the output table");
        }
    }
}

void plan_shifts(const Options& options, Correction_plan& plan)
{
    // Without an output table (only reachable with an explicit --shift for 8-bit output) an
    // 8-bit output keeps the top byte of the 16-bit result.
    const int default_shift = (!plan.output_tables && plan.output_bits == 8) ? -8 : 0;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        plan.channels[channel].shift = options.shift ? (*options.shift)[channel] : default_shift;
    }
}

void check_results_fit_samples(const Correction_plan& plan)
{
    const std::int64_t sample_max = largest_sample(plan.output_bits);
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const Lookup_table* table = plan.output_tables ? &(*plan.output_tables)[channel] : nullptr;
        const std::int64_t largest = largest_final_value(plan.channels[channel], table);
        if (largest > sample_max) {
            throw Usage_error(std::string("the ") + channel_names[channel] +
                              " results reach " + std::to_string(largest) + ", beyond " +
                              std::to_string(plan.output_bits) + "-bit samples (0.." +
                              std::to_string(sample_max) +
                              "); use a right --shift, a smaller --clamp or an output curve");
        }
    }
}

bool is_identity(const Matrix& matrix)
{
    return matrix == Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1};
}

// Colours stay what they were when nothing but the depth changes: no input table, identity
// matrices, the full clamp range, and no output step but the rounding or shift to 8 bits.
bool correction_keeps_colours(const Options& options, const Correction_plan& plan)
{
    const bool only_depth_change =
        !plan.output_tables ? (plan.output_bits == 16 ? plan.channels[0].shift == 0
                                                      : plan.channels[0].shift == -8)
                            : plan.rounding_table;
    const bool same_shift = plan.channels[0].shift == plan.channels[1].shift &&
                            plan.channels[1].shift == plan.channels[2].shift;
    return !plan.input_tables && !options.clamp && only_depth_change && same_shift &&
           std::all_of(plan.matrices.begin(), plan.matrices.end(), is_identity);
}

} // namespace

std::int64_t largest_final_value(const Channel_settings& channel, const Lookup_table* output_table)
{
    std::int64_t largest = channel.clamp_max;
    if (output_table) {
        largest = *std::max_element(output_table->begin() + channel.clamp_min,
                                    output_table->begin() + channel.clamp_max + 1);
    }
    if (channel.shift > 0) {
        return largest << channel.shift;
    }
    return largest >> -channel.shift;
}

Correction_plan make_correction_plan(const Options& options, const Run_context& context)
{
    Correction_plan plan;
    if (options.output_bits) {
        plan.output_bits = *options.output_bits;
    } else {
        plan.output_bits = context.built_in_chart ? default_chart_output_bits
                                                  : context.input_sample_bits;
    }
    plan_input_tables(options, plan);
    plan_output_tables(options, context, plan);
    plan_matrices(options, context, plan);
    plan_clamps(options, plan);
    plan_shifts(options, plan);
    check_results_fit_samples(plan);
    plan.keeps_colours = correction_keeps_colours(options, plan);
    return plan;
}

} // namespace xvr_color
