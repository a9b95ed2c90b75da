/*
 * corvane_xvr_LUT.h - public interface of libcorvane_xvr_LUT.so, the look-up-table library of
 * the corvane_xvr family.
 *
 * A table is an array of 32-bit entries that this library allocates, zeroes and owns. The
 * caller fills and reads it in place through the pointer of nq_get_LUT_data. Every table is
 * aligned to NQ_LUT_ALIGNMENT bytes (it starts a page).
 *
 * Readers index tables with 16-bit samples and check nothing, so whatever its entry count a
 * table is backed by zeroed, readable memory for every index from 0 to 65535 and for one
 * vector of its reader beyond index 65535 (16 bytes, or 32 when created for an AVX2 reader).
 * Reading index i of a table of n entries, n <= i <= 65535, gives 0: an input table of 2^k
 * entries maps every sample from 2^k up to 0, and a vector loop may load a whole vector that
 * starts at or past the last entry. Only the table's own entries may be written; the memory
 * past the pages they occupy is read-only and stays zero. Untouched pages cost no physical
 * memory, but every table takes 256 KiB and one page of address space.
 *
 * This header is C++ only: nq_create_LUT_test reports failure by throwing a C++ exception,
 * which a C caller could not catch. The functions have C linkage so that the colour-processing
 * library can bind them by name at run time.
 *
 * Threads: tables are independent of each other; different threads may create, use and
 * destroy different tables at the same time. One table must not be destroyed while another
 * thread still uses it.
 */
#ifndef CORVANE_XVR_LUT_H
#define CORVANE_XVR_LUT_H

#ifndef __cplusplus
#error "corvane_xvr_LUT.h is a C++ header: table creation reports failure with C++ exceptions."
#endif

#include <cstdint>

#if defined(__GNUC__)
#define NQ_LUT_API __attribute__((visibility("default")))
#else
#define NQ_LUT_API
#endif

/* Opaque table object; only pointers to it are handed out. */
struct nq_LUT_table;
typedef nq_LUT_table* LUT_handle;

enum : std::int32_t {
    /* Entry counts accepted by nq_create_LUT_test: powers of two in this range. */
    NQ_LUT_MIN_ENTRIES = 1,
    NQ_LUT_MAX_ENTRIES = 65536,
    /* Every table's first entry lies on a boundary of this many bytes (one cache line). */
    NQ_LUT_ALIGNMENT = 64,
    /* Zeroed, readable bytes guaranteed after index 65535, by the creation flag. */
    NQ_LUT_PADDING_BYTES = 16,
    NQ_LUT_AVX2_PADDING_BYTES = 32
};

/* Results of nq_LUT_transform_16, checked in this order. */
enum : int {
    NQ_LUT_NO_ERROR = 0,
    NQ_LUT_NULL_HANDLE = 1,
    NQ_LUT_NULL_BUFFER = 2,
    NQ_LUT_NEGATIVE_COUNT = 3
};

extern "C" {

/* Module set-up and tear-down. Tables keep no module-wide state, so both calls may be made any
 * number of times and in any order; tables created before a terminate stay valid. */
NQ_LUT_API void nq_LUT_module_initialize(void);
NQ_LUT_API void nq_LUT_module_terminate(void);

/* Creates a zeroed table of `entries` 32-bit entries. `avx2_flag` is true when the table will
 * be read by AVX2 code; it widens the guaranteed padding to one 32-byte vector.
 * Never returns null. Throws std::invalid_argument when `entries` is not a power of two from
 * NQ_LUT_MIN_ENTRIES to NQ_LUT_MAX_ENTRIES, and std::bad_alloc when memory runs out. */
NQ_LUT_API LUT_handle nq_create_LUT_test(int entries, bool avx2_flag);

/* The table's first entry: the same pointer for the whole life of the table. Null for a null
 * handle. */
NQ_LUT_API std::int32_t* nq_get_LUT_data(LUT_handle table);

/* Number of entries the table was created with; 0 for a null handle. */
NQ_LUT_API std::int32_t nq_get_LUT_entry_count(LUT_handle table);

/* Applies the table to `count` 16-bit samples: output[i] = low 16 bits of entry input[i].
 * A sample past the last index reads the last entry, so a table of 2^k entries acts as a
 * saturating curve on k-bit data. `output` may equal `input` (in place); other overlaps are
 * not allowed. Returns one of the NQ_LUT_ codes above; on an error nothing is written. A count
 * of 0 writes nothing and succeeds. */
NQ_LUT_API int nq_LUT_transform_16(LUT_handle table, const std::uint16_t* input,
                                   std::uint16_t* output, std::int32_t count);

/* Releases the table and its memory. A null handle is ignored. */
NQ_LUT_API void nq_destroy_LUT(LUT_handle table);

/* Number of tables created and not yet destroyed in this process, for leak checks. */
NQ_LUT_API std::int32_t nq_LUT_live_table_count(void);

}

#endif /* CORVANE_XVR_LUT_H */
