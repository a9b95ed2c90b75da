#include "lookup_tables.hpp"

#include <cmath>

namespace xvr_color {

Rgb_tables same_table_for_each_channel(const Lookup_table& table)
{
    return Rgb_tables{table, table, table};
}

std::int32_t to_table_value(double unit_value, std::int32_t max_value)
{
    double scaled = std::floor(unit_value * max_value + 0.5);
    if (!(scaled > 0.0)) {
        return 0;
    }
    return scaled >= max_value ? max_value : static_cast<std::int32_t>(scaled);
}

Lookup_table make_input_table(const Curve& curve)
{
    Lookup_table table(input_table_entries);
    const double last = static_cast<double>(input_table_entries - 1);
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = to_table_value(decode_with(curve, i / last), input_table_max_value);
    }
    return table;
}

Lookup_table make_output_table(const Curve& curve, std::size_t entries, std::int32_t max_value)
{
    Lookup_table table(entries);
    const double last = static_cast<double>(entries - 1);
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = to_table_value(encode_with(curve, i / last), max_value);
    }
    return table;
}

} // namespace xvr_color
