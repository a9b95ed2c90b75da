// The command line of xvr-color. Every correction option maps onto one setting of the
// library; `parse_options` only checks what can be checked without the image (value counts,
// ranges, names), and the correction plan checks how the settings fit together.
#pragma once

#include "curves.hpp"
#include "image_files.hpp"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace xvr_color {

// Nine coefficients, row-major: row 0 gives red, row 1 green, row 2 blue; the columns weight
// the red, green and blue inputs.
using Matrix = std::array<float, 9>;

struct Table_choice {
    enum class Source { none, curve, file };
    Source source = Source::none;
    Curve curve;      // when source is curve
    std::string path; // when source is file
};

struct Clamp_range {
    int min = 0;
    int max = 65535;
};

struct Vector_choice {
    bool automatic = true; // the library detects the level
    int level = 0;         // the forced level when not automatic: 0 scalar, 1 SSE, 2 AVX2
};

struct Options {
    bool show_help = false;
    bool show_version = false;
    bool quiet = false;            // no summary and no progress line
    std::vector<std::string> inputs; // none: the built-in test chart; "-": standard input
    std::string output_path;       // empty: the chart's default file name; "-": standard output
    std::string output_dir;        // for several inputs: where their outputs go
    std::string name_pattern = "{name}.{ext}"; // output names in output_dir
    std::optional<Image_file_format> format;   // output format when no file name says it
    Tiff_compression tiff_compression = Tiff_compression::none;
    bool in_place = false;         // an output may replace its input
    bool keep_profile = false;     // keep the input's ICC profile even when colours change
    std::string output_profile_path; // embed this ICC profile instead
    std::vector<Matrix> matrices; // in the order given; "identity" adds the identity
    std::optional<Table_choice> input_table;
    std::optional<Table_choice> output_table;
    int output_table_bits = 16;
    std::optional<std::array<Clamp_range, 3>> clamp; // red, green, blue
    std::optional<std::array<int, 3>> shift;          // red, green, blue
    std::optional<int> output_bits;                   // 8 or 16
    Vector_choice vector;
    unsigned threads = 0; // 0: every processor this process may use
    int repeat = 1;

    bool batch() const { return !output_dir.empty(); }
};

// Throws Usage_error with a one-line explanation for anything it cannot accept.
Options parse_options(const std::vector<std::string>& arguments);

// The --help text.
std::string usage_text();

} // namespace xvr_color
