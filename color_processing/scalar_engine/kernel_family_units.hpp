// The boundary between the top of the dispatch and the kernel units. The top
// (scalar_process.cpp) takes the first seven decisions: input format and the six table flags.
// Each of the 384 kernel units owns the dispatch level reached after them, with five values
// still to convert, and through it 162 kernels. The units are generated, and listed in
// kernel_family_units.inc, by kernel_family.cmake; README.md says how to change the split.
#pragma once

#include "finish_block_units.hpp"
#include "specialisation_dispatch.hpp"

#include <tuple>
#include <type_traits>

static_assert(kernel_unit_level == 5, "the unit entry below converts five values");

// The dispatch level that a unit owns.
#define NQ_KERNEL_UNIT_LEVEL(T, F, B1, B2, B3, B4, B5, B6)                                          \
    var_to_template<Scalar_process_callback, 5u,                                                   \
                    std::tuple<std::integral_constant<NQ_COLOR_FORMAT, NQ_COLOR_FORMAT(F)>,         \
                               std::integral_constant<bool, B1>, std::integral_constant<bool, B2>,  \
                               std::integral_constant<bool, B3>, std::integral_constant<bool, B4>,  \
                               std::integral_constant<bool, B5>, std::integral_constant<bool, B6>>>

// The signature in which the seventh level calls it: the blue shifter state by value, the two
// computed shifter states as rvalues, then the record's own fields and the start index. The top
// must call exactly this; any other signature would be a different function, which the top
// would then compile itself (specialisation_dispatch.hpp refuses that at compile time).
#define NQ_KERNEL_UNIT_ENTRY(T, F, B1, B2, B3, B4, B5, B6)                                          \
    NQ_KERNEL_UNIT_LEVEL(T, F, B1, B2, B3, B4, B5, B6)::impl<                                       \
        void, SINGLE_CHANNEL_SHIFTER_STATE, SINGLE_CHANNEL_SHIFTER_STATE, const bool&,              \
        const NQ_COLOR_FORMAT&, const Transform_arguments<T>&, int&>(                               \
        SINGLE_CHANNEL_SHIFTER_STATE, SINGLE_CHANNEL_SHIFTER_STATE&&, SINGLE_CHANNEL_SHIFTER_STATE&&, \
        const bool&, const NQ_COLOR_FORMAT&, const Transform_arguments<T>&, int&)

#define NQ_DECLARE_KERNEL_UNIT(T, F, B1, B2, B3, B4, B5, B6) \
    extern template void NQ_KERNEL_UNIT_ENTRY(T, F, B1, B2, B3, B4, B5, B6);
#define NQ_INSTANTIATE_KERNEL_UNIT(T, F, B1, B2, B3, B4, B5, B6) \
    template void NQ_KERNEL_UNIT_ENTRY(T, F, B1, B2, B3, B4, B5, B6);
