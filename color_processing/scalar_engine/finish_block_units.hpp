// The finishing stage of the kernels (pixel_stages.hpp) is compiled in 16 units of its own, one
// per sample type and combination of the three output-table flags, each holding the 162
// variants of the shift states, fourth channel and output layout. The 384 kernel units declare
// the variants they call `extern template`, so no unit compiles a variant twice.
#pragma once

#include "pixel_stages.hpp"

#define NQ_FINISH_BLOCK_SIGNATURE(T, BO, GO, RO, BS, GS, RS, FOURTH, OUT)                         \
    finish_block<BO, GO, RO, SINGLE_CHANNEL_SHIFTER_STATE(BS), SINGLE_CHANNEL_SHIFTER_STATE(GS),  \
                 SINGLE_CHANNEL_SHIFTER_STATE(RS), FOURTH, NQ_COLOR_FORMAT(OUT), T>(              \
        const Transform_arguments<T>&, int32_t, int, const int32_t*)

#define NQ_DECLARE_FINISH_BLOCK(T, BO, GO, RO, BS, GS, RS, FOURTH, OUT) \
    extern template void NQ_FINISH_BLOCK_SIGNATURE(T, BO, GO, RO, BS, GS, RS, FOURTH, OUT);
#define NQ_INSTANTIATE_FINISH_BLOCK(T, BO, GO, RO, BS, GS, RS, FOURTH, OUT) \
    template void NQ_FINISH_BLOCK_SIGNATURE(T, BO, GO, RO, BS, GS, RS, FOURTH, OUT);

// NQ_FOR_EACH_FINISH_BLOCK(M, T, BO, GO, RO) expands M once per variant of one finish unit.
#define NQ_FINISH_BLOCKS_OUTPUT(M, T, BO, GO, RO, BS, GS, RS, FOURTH) \
    M(T, BO, GO, RO, BS, GS, RS, FOURTH, 0)                           \
    M(T, BO, GO, RO, BS, GS, RS, FOURTH, 1)                           \
    M(T, BO, GO, RO, BS, GS, RS, FOURTH, 2)
#define NQ_FINISH_BLOCKS_FOURTH(M, T, BO, GO, RO, BS, GS, RS)      \
    NQ_FINISH_BLOCKS_OUTPUT(M, T, BO, GO, RO, BS, GS, RS, false) \
    NQ_FINISH_BLOCKS_OUTPUT(M, T, BO, GO, RO, BS, GS, RS, true)
#define NQ_FINISH_BLOCKS_RED_SHIFT(M, T, BO, GO, RO, BS, GS) \
    NQ_FINISH_BLOCKS_FOURTH(M, T, BO, GO, RO, BS, GS, 0)     \
    NQ_FINISH_BLOCKS_FOURTH(M, T, BO, GO, RO, BS, GS, 1)     \
    NQ_FINISH_BLOCKS_FOURTH(M, T, BO, GO, RO, BS, GS, 2)
#define NQ_FINISH_BLOCKS_GREEN_SHIFT(M, T, BO, GO, RO, BS) \
    NQ_FINISH_BLOCKS_RED_SHIFT(M, T, BO, GO, RO, BS, 0)    \
    NQ_FINISH_BLOCKS_RED_SHIFT(M, T, BO, GO, RO, BS, 1)    \
    NQ_FINISH_BLOCKS_RED_SHIFT(M, T, BO, GO, RO, BS, 2)
#define NQ_FOR_EACH_FINISH_BLOCK(M, T, BO, GO, RO) \
    NQ_FINISH_BLOCKS_GREEN_SHIFT(M, T, BO, GO, RO, 0) \
    NQ_FINISH_BLOCKS_GREEN_SHIFT(M, T, BO, GO, RO, 1) \
    NQ_FINISH_BLOCKS_GREEN_SHIFT(M, T, BO, GO, RO, 2)
