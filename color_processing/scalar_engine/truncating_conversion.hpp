// Conversion of a block of doubles to 32-bit integers by truncation toward zero, with the x87
// out-of-range result: NaN and values outside the int32 range give -2147483648.
//
// A per-value conversion on x87 needs two control-word loads (to truncation and back); a
// control-word load inside a pixel loop is slow and its cost depends on where the linker puts
// the code. Converting a whole block under one control-word switch removes both problems and
// keeps the result bit-identical, because loading a double onto the x87 stack is exact and
// fistp in truncation mode is the conversion itself.
#pragma once

#include <cstdint>

void convert_to_int32_truncating(const double* values, int32_t* results, int count);
