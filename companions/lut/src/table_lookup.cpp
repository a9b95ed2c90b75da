#include "table_lookup.hpp"

void apply_table_16(const std::int32_t* table, std::int32_t entry_count, const std::uint16_t* input,
                    std::uint16_t* output, std::int32_t count)
{
    const std::uint32_t last_index = static_cast<std::uint32_t>(entry_count) - 1u;
    for (std::int32_t i = 0; i < count; ++i) {
        const std::uint32_t sample = input[i];
        // Saturating instead of reading past the table: a 12-bit curve applied to samples
        // with stray high bits then yields the curve's top value.
        const std::uint32_t index = sample < last_index ? sample : last_index;
        output[i] = static_cast<std::uint16_t>(static_cast<std::uint32_t>(table[index]) & 0xFFFFu);
    }
}
