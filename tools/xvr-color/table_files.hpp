// Tables read from files, in two formats chosen by the file name:
//   *.cube  a 1D cube file: LUT_1D_SIZE N (2..65536), optional TITLE, DOMAIN_MIN r g b,
//           DOMAIN_MAX r g b (or LUT_1D_INPUT_RANGE lo hi), then N lines of three numbers
//           (red, green, blue) from 0 to 1. It is resampled with linear interpolation to the
//           table's size and scaled to its value range, one table per channel; values outside
//           0..1 are clipped.
//   other   one integer per line, the raw entries of one table used for all three channels;
//           exactly as many lines as the table has entries. Blank lines and lines starting
//           with '#' are skipped.
#pragma once

#include "lookup_tables.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

namespace xvr_color {

// What the table being filled needs: its size, its largest allowed entry and how messages
// call it ("the input table", "the output table").
struct Table_shape {
    std::size_t entries = 0;
    std::int32_t max_value = 0;
    std::string role;
};

bool is_cube_file_name(const std::string& path);

// Reads either format (by the file name). Throws Tool_error for a missing file, a wrong number
// of entries, an entry that is not a number or is out of range, and a malformed cube file.
Rgb_tables read_table_file(const std::string& path, const Table_shape& shape);

// The two formats from text already in memory; `name` is used in messages.
Lookup_table parse_integer_table(const std::string& text, const std::string& name,
                                 const Table_shape& shape);
Rgb_tables parse_cube_table(const std::string& text, const std::string& name,
                            const Table_shape& shape);

} // namespace xvr_color
