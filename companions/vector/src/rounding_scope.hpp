// The SSE control state of one vector transform. The caller's MXCSR may hold any rounding
// mode and may flush denormals; the exactness argument needs round-to-nearest and no flushing,
// and the conversion to integers needs the invalid-operation exception masked so that NaN and
// out-of-range sums give 0x80000000 instead of a trap. The caller's state, flags included, is
// restored on leaving, on every path.
#pragma once

#include <xmmintrin.h>

class Rounding_scope {
public:
    Rounding_scope() : m_saved(_mm_getcsr()) { _mm_setcsr(nearest_all_masked); }
    ~Rounding_scope() { _mm_setcsr(m_saved); }
    Rounding_scope(const Rounding_scope&) = delete;
    Rounding_scope& operator=(const Rounding_scope&) = delete;

private:
    // Round-to-nearest, every exception masked, flush-to-zero and denormals-are-zero off.
    static constexpr unsigned nearest_all_masked = 0x1F80u;
    unsigned m_saved;
};
