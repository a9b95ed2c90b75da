// The source lines that the library's log records carry. A record names a fixed line, not the
// line of the statement that writes it: together with the source file and the function name
// it identifies the record, so that hosts can filter their logs on it, and it stays the same
// however the code around it changes.
#pragma once

// Records of color_processing/corvane_xvr_color_processing.
namespace record_line {
constexpr int negative_bit_depth = 37;
constexpr int bit_depth_too_large = 43;
constexpr int creation_out_of_memory = 58;
constexpr int creation_failed = 63;
constexpr int transform_null_handle = 97;
constexpr int transform_timing = 101;
constexpr int creation_notice = 133;
constexpr int get_blue_input_LUT = 166;
constexpr int get_green_input_LUT = 184;
constexpr int get_red_input_LUT = 202;
constexpr int enable_input_LUTs = 223;
constexpr int append_matrix = 246;
constexpr int clear_matrix = 266;
constexpr int get_blue_output_LUT = 286;
constexpr int get_green_output_LUT = 304;
constexpr int get_red_output_LUT = 322;
constexpr int enable_output_LUTs = 343;
constexpr int destroy_color_processor = 501;
}  // namespace record_line

// Records of the transform's validation, color_processing/color_correction.
namespace validation_line {
constexpr int null_input_buffer = 114;
constexpr int null_output_buffer = 120;
constexpr int identical_buffers = 126;
constexpr int invalid_input_format = 132;
constexpr int invalid_blue_shift = 138;
constexpr int invalid_green_shift = 144;
constexpr int invalid_red_shift = 150;
constexpr int invalid_blue_clamp = 156;
constexpr int invalid_green_clamp = 162;
constexpr int invalid_red_clamp = 168;
constexpr int invalid_output_format = 174;
}  // namespace validation_line
