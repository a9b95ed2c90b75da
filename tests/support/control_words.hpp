// The floating-point control registers a caller may leave in any state: the x87 control word
// and MXCSR.
#pragma once

#include <cstdint>

inline uint16_t x87_control_word()
{
    uint16_t word;
    asm volatile("fnstcw %0" : "=m"(word));
    return word;
}

// Pending exceptions go first: one the new word unmasks would trap at the next x87 instruction.
inline void load_x87_control_word(uint16_t word)
{
    asm volatile("fnclex\n\tfldcw %0" : : "m"(word));
}

inline unsigned read_mxcsr()
{
    unsigned value = 0;
    asm volatile("stmxcsr %0" : "=m"(value));
    return value;
}

inline void write_mxcsr(unsigned value)
{
    asm volatile("ldmxcsr %0" : : "m"(value));
}
