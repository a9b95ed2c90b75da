// The kernel family is compiled in 384 units: one per sample type and combination of the
// first seven decisions (input format and the six table flags). Each unit instantiates the
// dispatch level that converts the remaining five values, and with it 162 kernels (their
// finishing stages come from the finish units of finish_block_units.hpp); the top of
// the dispatch (scalar_process.cpp) declares those levels `extern template` so that it compiles
// in a moment and never has to be rebuilt with the kernels.
#pragma once

#include "finish_block_units.hpp"
#include "specialisation_dispatch.hpp"

#include <tuple>
#include <type_traits>

// The dispatch level that a unit owns: five values still to convert.
#define NQ_KERNEL_UNIT_LEVEL(T, F, B1, B2, B3, B4, B5, B6)                                          \
    var_to_template<Scalar_process_callback, 5u,                                                   \
                    std::tuple<std::integral_constant<NQ_COLOR_FORMAT, NQ_COLOR_FORMAT(F)>,         \
                               std::integral_constant<bool, B1>, std::integral_constant<bool, B2>,  \
                               std::integral_constant<bool, B3>, std::integral_constant<bool, B4>,  \
                               std::integral_constant<bool, B5>, std::integral_constant<bool, B6>>>

// The signature in which the seventh level calls it: the blue shifter state by value, the two
// computed shifter states as rvalues, then the record's own fields and the start index.
#define NQ_KERNEL_UNIT_ENTRY(T, F, B1, B2, B3, B4, B5, B6)                                          \
    NQ_KERNEL_UNIT_LEVEL(T, F, B1, B2, B3, B4, B5, B6)::impl<                                       \
        void, SINGLE_CHANNEL_SHIFTER_STATE, SINGLE_CHANNEL_SHIFTER_STATE, const bool&,              \
        const NQ_COLOR_FORMAT&, const Transform_arguments<T>&, int&>(                               \
        SINGLE_CHANNEL_SHIFTER_STATE, SINGLE_CHANNEL_SHIFTER_STATE&&, SINGLE_CHANNEL_SHIFTER_STATE&&, \
        const bool&, const NQ_COLOR_FORMAT&, const Transform_arguments<T>&, int&)

#define NQ_DECLARE_KERNEL_UNIT(T, F, B1, B2, B3, B4, B5, B6) \
    extern template void NQ_KERNEL_UNIT_ENTRY(T, F, B1, B2, B3, B4, B5, B6);
#define NQ_INSTANTIATE_KERNEL_UNIT(T, F, B1, B2, B3, B4, B5, B6)            \
    NQ_FOR_EACH_FINISH_BLOCK(NQ_DECLARE_FINISH_BLOCK, T, B4, B5, B6)         \
    template void NQ_KERNEL_UNIT_ENTRY(T, F, B1, B2, B3, B4, B5, B6);

// NQ_FOR_EACH_KERNEL_UNIT(M) expands M(T, F, B1, ..., B6) once per unit. The preprocessor does
// not re-enter a macro inside its own expansion, hence one macro per flag.
#define NQ_KERNEL_UNITS_FLAG6(M, T, F, B1, B2, B3, B4, B5) \
    M(T, F, B1, B2, B3, B4, B5, false) M(T, F, B1, B2, B3, B4, B5, true)
#define NQ_KERNEL_UNITS_FLAG5(M, T, F, B1, B2, B3, B4) \
    NQ_KERNEL_UNITS_FLAG6(M, T, F, B1, B2, B3, B4, false) NQ_KERNEL_UNITS_FLAG6(M, T, F, B1, B2, B3, B4, true)
#define NQ_KERNEL_UNITS_FLAG4(M, T, F, B1, B2, B3) \
    NQ_KERNEL_UNITS_FLAG5(M, T, F, B1, B2, B3, false) NQ_KERNEL_UNITS_FLAG5(M, T, F, B1, B2, B3, true)
#define NQ_KERNEL_UNITS_FLAG3(M, T, F, B1, B2) \
    NQ_KERNEL_UNITS_FLAG4(M, T, F, B1, B2, false) NQ_KERNEL_UNITS_FLAG4(M, T, F, B1, B2, true)
#define NQ_KERNEL_UNITS_FLAG2(M, T, F, B1) \
    NQ_KERNEL_UNITS_FLAG3(M, T, F, B1, false) NQ_KERNEL_UNITS_FLAG3(M, T, F, B1, true)
#define NQ_KERNEL_UNITS_FLAG1(M, T, F) \
    NQ_KERNEL_UNITS_FLAG2(M, T, F, false) NQ_KERNEL_UNITS_FLAG2(M, T, F, true)
#define NQ_KERNEL_UNITS_FORMAT(M, T) \
    NQ_KERNEL_UNITS_FLAG1(M, T, 0) NQ_KERNEL_UNITS_FLAG1(M, T, 1) NQ_KERNEL_UNITS_FLAG1(M, T, 2)
#define NQ_FOR_EACH_KERNEL_UNIT(M) \
    NQ_KERNEL_UNITS_FORMAT(M, unsigned short) NQ_KERNEL_UNITS_FORMAT(M, unsigned char)
