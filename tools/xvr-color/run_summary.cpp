#include "run_summary.hpp"

#include "image_files.hpp"

#include <cstdio>

namespace xvr_color {

namespace {

std::string format_number(double value, int decimals)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

std::string size_text(const Image& image)
{
    return std::to_string(image.width) + " x " + std::to_string(image.height);
}

bool same_for_all_channels(const Correction_plan& plan)
{
    const Channel_settings& red = plan.channels[0];
    for (const Channel_settings& other : plan.channels) {
        if (other.clamp_min != red.clamp_min || other.clamp_max != red.clamp_max ||
            other.shift != red.shift) {
            return false;
        }
    }
    return true;
}

std::string channel_text(const Channel_settings& channel)
{
    return "clamp " + std::to_string(channel.clamp_min) + ".." + std::to_string(channel.clamp_max) +
           ", shift " + std::to_string(channel.shift);
}

std::string channels_text(const Correction_plan& plan)
{
    if (same_for_all_channels(plan)) {
        return channel_text(plan.channels[0]);
    }
    return "red " + channel_text(plan.channels[0]) + "; green " + channel_text(plan.channels[1]) +
           "; blue " + channel_text(plan.channels[2]);
}

std::string matrices_text(const Correction_plan& plan)
{
    const std::size_t given = plan.matrices.size() - (plan.scale_appended ? 1 : 0);
    std::string text = std::to_string(given) + (given == 1 ? " matrix" : " matrices");
    if (plan.scale_appended) {
        text += " + scale to the output table";
    }
    return text;
}

std::string table_text(const std::string& name, int bits)
{
    if (bits == 0) {
        return name;
    }
    return name + " (" + std::to_string(1u << bits) + " entries)";
}

} // namespace

std::string describe_input(const std::string& input_path, const Image& image)
{
    const std::string source = input_path.empty() ? "built-in test chart" : input_path;
    return "input " + source + ", " + size_text(image) + ", " +
           std::to_string(image.sample_bits) + "-bit RGB";
}

std::string describe_correction(const Correction_plan& plan)
{
    return "input table " + table_text(plan.input_table_name, plan.input_table_bits) + ", " +
           matrices_text(plan) + ", " + channels_text(plan) + ", output table " +
           table_text(plan.output_table_name, plan.output_table_bits) + ", " +
           std::to_string(plan.output_bits) + "-bit output";
}

std::string describe_throughput(std::size_t pixels, int transforms, double seconds, unsigned threads)
{
    std::string text = std::to_string(transforms) + (transforms == 1 ? " transform" : " transforms") +
                       " of " + std::to_string(pixels) + " pixels in " +
                       format_number(seconds * 1000.0, 3) + " ms on " + std::to_string(threads) +
                       (threads == 1 ? " thread" : " threads");
    if (seconds <= 0.0) {
        return text + ": too fast to measure";
    }
    const double megapixels = static_cast<double>(pixels) * transforms / 1e6;
    return text + ": " + format_number(megapixels / seconds, 1) + " megapixels per second";
}

std::string describe_output(const std::string& output_name, const Image& image, Image_file_format format)
{
    std::string text = "wrote " + output_name + ", " + size_text(image) + ", " +
                       std::to_string(image.sample_bits) + "-bit " + format_name(format);
    if (!image.icc_profile.empty()) {
        text += " with an ICC profile";
    }
    return text;
}

} // namespace xvr_color
