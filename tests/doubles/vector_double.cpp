// Stand-in for a vector library, built once as the SSE one and once as the AVX2 one
// (NQ_VECTOR_KIND sse or avx2). It writes no pixel: it records the record it was handed and
// answers the index a test chose, so that the scalar path's share shows in the output.
// Settings (probe keys, <kind> being sse or avx2):
//   <kind>.initialize_result   what initialize returns (0: ready)
//   <kind>.transform_result    what both transform entry points return
//   <kind>.transform_throws    both transform entry points throw std::runtime_error
#include "companion_probe.hpp"

#include <corvane_xvr_color_processing_vector.h>

#include <stdexcept>
#include <string>

#define NQ_STRING(x) NQ_STRING_IMPL(x)
#define NQ_STRING_IMPL(x) #x
#define NQ_ENTRY(prefix, suffix) NQ_ENTRY_IMPL(prefix, NQ_VECTOR_KIND, suffix)
#define NQ_ENTRY_IMPL(prefix, kind, suffix) NQ_ENTRY_PASTE(prefix, kind, suffix)
#define NQ_ENTRY_PASTE(prefix, kind, suffix) prefix##kind##suffix

namespace {

const char* const kind = NQ_STRING(NQ_VECTOR_KIND);

std::string key(const char* name)
{
    return std::string(kind) + "." + name;
}

template <typename T>
int answer(const Transform_arguments<T>& record, const char* entry, const char* record_key)
{
    nq_probe_event("%s.%s %d", kind, entry, record.pixel_count);
    nq_probe_keep_bytes(key(record_key), &record, sizeof record);
    if (nq_probe_setting(key("transform_throws"), 0)) {
        throw std::runtime_error("vector unit fault");
    }
    return nq_probe_setting(key("transform_result"), 0);
}

const Probe_load_announcer announcer(kind);

}  // namespace

extern "C" {

int NQ_ENTRY(nq_color_processing_vector_, _module_initialize)()
{
    nq_probe_event("%s.initialize", kind);
    return nq_probe_setting(key("initialize_result"), 0);
}

int NQ_ENTRY(nq_color_processing_transform_8_bit_output_vector_, )(
    const Transform_arguments<unsigned char>* record)
{
    return answer(*record, "transform_8", "record_8");
}

int NQ_ENTRY(nq_color_processing_transform_16_bit_output_vector_, )(
    const Transform_arguments<unsigned short>* record)
{
    return answer(*record, "transform_16", "record_16");
}

void NQ_ENTRY(nq_color_processing_vector_, _module_terminate)()
{
    nq_probe_event("%s.terminate", kind);
}

}  // extern "C"
