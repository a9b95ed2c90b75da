// Tables as the library takes them: 32-bit entries, one table per channel. The input tables
// are indexed by a 16-bit sample and give a 16-bit value; the output tables are indexed by the
// clamped matrix result (0 .. entries-1) and give the output sample.
#pragma once

#include "curves.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace xvr_color {

using Lookup_table = std::vector<std::int32_t>;

// Red, green and blue tables, in that order.
using Rgb_tables = std::array<Lookup_table, 3>;

// Input samples are 16-bit, so an input table always has 65536 entries.
constexpr std::size_t input_table_entries = 65536;
constexpr std::int32_t input_table_max_value = 65535;

// The same table for all three channels.
Rgb_tables same_table_for_each_channel(const Lookup_table& table);

// Entry i = round(65535 x decode(i / 65535)).
Lookup_table make_input_table(const Curve& curve);

// Entry i = round(max_value x encode(i / (entries - 1))); entries is at least 2.
Lookup_table make_output_table(const Curve& curve, std::size_t entries, std::int32_t max_value);

// Rounds half up and keeps the result within 0..max_value.
std::int32_t to_table_value(double unit_value, std::int32_t max_value);

} // namespace xvr_color
