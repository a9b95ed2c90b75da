#include "icc_profiles.hpp"

#include "input_source.hpp"
#include "tool_error.hpp"

#include <cstring>

namespace xvr_color {

namespace {

constexpr std::size_t icc_header_size = 128;
constexpr std::uint64_t largest_profile = 64u << 20;

std::string profile_text(const Image& input, const std::string& input_name)
{
    std::string text = "the ICC profile of " + input_name;
    if (!input.icc_profile_name.empty()) {
        text += " ('" + input.icc_profile_name + "')";
    }
    return text;
}

} // namespace

Profile_outcome decide_profile(const Image& input, const std::string& input_name, bool keeps_colours,
                               const Profile_request& request, Image_file_format output_format)
{
    Profile_outcome outcome;
    if (request.given != nullptr) {
        outcome.bytes = *request.given;
        return outcome;
    }
    if (input.icc_profile.empty()) {
        return outcome;
    }
    if (!format_holds_profile(output_format)) {
        outcome.note = profile_text(input, input_name) + " was dropped: " + format_name(output_format) +
                       " files cannot hold one; write PNG or TIFF to keep it";
        return outcome;
    }
    if (keeps_colours || request.keep) {
        outcome.bytes = input.icc_profile;
        outcome.name = input.icc_profile_name;
        return outcome;
    }
    outcome.note = profile_text(input, input_name) +
                   " was dropped: the correction changes the colours, so it would no longer "
                   "describe them; --keep-profile keeps it, --output-profile FILE embeds another";
    return outcome;
}

std::vector<std::uint8_t> read_icc_profile(const std::string& path)
{
    Input_source source(path);
    std::vector<std::uint8_t> bytes;
    source.read_rest(bytes, largest_profile);
    if (bytes.size() < icc_header_size || std::memcmp(bytes.data() + 36, "acsp", 4) != 0) {
        throw Tool_error(path + " is not an ICC profile: it lacks the 'acsp' signature of one");
    }
    return bytes;
}

} // namespace xvr_color
