// What becomes of an input's ICC profile. A profile describes the colours of the pixels it came
// with: it is written to the output unchanged when the correction leaves colours as they were
// (or the user says --keep-profile), a profile given with --output-profile is embedded instead,
// and otherwise the tool says in one line that it dropped the profile and why. Never silently.
#pragma once

#include "image.hpp"
#include "image_files.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace xvr_color {

struct Profile_request {
    bool keep = false;                          // --keep-profile
    const std::vector<std::uint8_t>* given = nullptr; // --output-profile, or null
};

struct Profile_outcome {
    std::vector<std::uint8_t> bytes; // to embed, or empty
    std::string name;                // the PNG profile name
    std::string note;                // one line for the user, or empty
};

Profile_outcome decide_profile(const Image& input, const std::string& input_name, bool keeps_colours,
                               const Profile_request& request, Image_file_format output_format);

// Reads an ICC profile file for --output-profile; throws Tool_error when it cannot be read or
// is not an ICC profile (no "acsp" signature at byte 36).
std::vector<std::uint8_t> read_icc_profile(const std::string& path);

} // namespace xvr_color
