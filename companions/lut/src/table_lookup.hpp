// Applying a table to a run of 16-bit samples.
#pragma once

#include <cstdint>

// output[i] = low 16 bits of table[min(input[i], entry_count - 1)] for i in [0, count).
// The arguments are trusted: a table of entry_count >= 1 entries, buffers of count samples.
void apply_table_16(const std::int32_t* table, std::int32_t entry_count, const std::uint16_t* input,
                    std::uint16_t* output, std::int32_t count);
