// The x87 environment that the library's arithmetic runs under, whatever its caller set.
//
// The x87 control word belongs to the thread, and the library inherits the host's. A host that
// lowered precision control (0x007f, 24-bit significands, is still set by some older libraries
// and Direct3D-era code) or chose another rounding mode would otherwise get sums formed with
// fewer than 64 significant bits, or rounded to double the wrong way, and so different pixels.
// A host that unmasked an exception would even be trapped by a NaN sum, which the pixel rule
// turns into the channel's minimum. So every computation of the library runs inside one of
// these scopes: the caller's whole environment (control word, exception flags) is saved, the
// library's own word is loaded, and the caller's environment comes back on the way out, without
// the exception flags that the library's arithmetic raised.
//
// A scope costs two environment stores and loads, about a hundred cycles: it is taken once per
// call, never per pixel (a control-word load inside a pixel loop is a performance cliff on this
// kind of processor, whose depth depends on where the linker places the code).
#pragma once

#include <cstdint>

// Every exception masked, 64-bit significands, round to nearest.
constexpr uint16_t x87_library_control_word = 0x037F;

class X87_arithmetic_scope {
public:
    X87_arithmetic_scope() noexcept;
    ~X87_arithmetic_scope();

    X87_arithmetic_scope(const X87_arithmetic_scope&) = delete;
    X87_arithmetic_scope& operator=(const X87_arithmetic_scope&) = delete;

private:
    // What fnstenv stores in 32-bit protected mode: control, status and tag words, the last
    // instruction and operand pointers.
    struct Environment {
        uint32_t words[7];
    };

    Environment m_caller;
};
