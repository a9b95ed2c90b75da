#include "x87_arithmetic_scope.hpp"

#if !defined(__i386__)
#error "The scalar engine relies on the x87 unit of a 32-bit x86 build."
#endif

// Out of line, like the block conversion, so that the library loads the control word in a few
// shared places only and never inside a kernel.
__attribute__((noinline)) X87_arithmetic_scope::X87_arithmetic_scope() noexcept
{
    // fnstenv also masks every exception in the live control word, so nothing can trap between
    // the two instructions.
    asm volatile("fnstenv %0" : "=m"(m_caller));
    const uint16_t library_word = x87_library_control_word;
    asm volatile("fldcw %0" : : "m"(library_word));
}

__attribute__((noinline)) X87_arithmetic_scope::~X87_arithmetic_scope()
{
    // The caller's status word comes back too: flags raised here (inexact on nearly every sum,
    // invalid on a NaN) must not surface as a pending exception under a caller that unmasked it.
    asm volatile("fldenv %0" : : "m"(m_caller));
}
