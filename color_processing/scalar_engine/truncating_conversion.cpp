#include "truncating_conversion.hpp"

#if !defined(__i386__)
#error "The scalar engine relies on the x87 unit of a 32-bit x86 build."
#endif

namespace {

constexpr uint16_t rounding_control_toward_zero = 0x0C00;

}  // namespace

// Kept out of line so that every kernel shares one placement of the control-word loads.
__attribute__((noinline)) void convert_to_int32_truncating(const double* values, int32_t* results,
                                                           int count)
{
    uint16_t saved_control_word;
    asm volatile("fnstcw %0" : "=m"(saved_control_word));
    const uint16_t truncating_control_word = saved_control_word | rounding_control_toward_zero;
    asm volatile("fldcw %0" : : "m"(truncating_control_word));
    // With the invalid-operation exception masked (the default), fistp stores the integer
    // indefinite 0x80000000 for NaN and out-of-range values. Three values a step (one pixel's
    // channels) keep the loop overhead off the conversions.
    // The triple is addressed through two base registers rather than six memory operands:
    // where registers are scarce (frame pointer kept, PIC register, sanitizer instrumentation)
    // the compiler cannot form six independent addresses.
    int k = 0;
    for (; k + 3 <= count; k += 3) {
        using Value_triple = const double[3];
        using Result_triple = int32_t[3];
        asm volatile("fldl (%2)\n\tfistpl (%1)\n\tfldl 8(%2)\n\tfistpl 4(%1)\n\t"
                     "fldl 16(%2)\n\tfistpl 8(%1)"
                     : "=m"(*reinterpret_cast<Result_triple*>(results + k))
                     : "r"(results + k), "r"(values + k),
                       "m"(*reinterpret_cast<Value_triple*>(values + k))
                     : "st");
    }
    for (; k < count; ++k) {
        asm volatile("fldl %1\n\tfistpl %0" : "=m"(results[k]) : "m"(values[k]) : "st");
    }
    asm volatile("fldcw %0" : : "m"(saved_control_word));
}
