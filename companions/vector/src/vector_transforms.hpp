// The transform of each instruction set, defined in pixel_pipeline_<isa>.cpp: processes the
// largest multiple of its vector width of the record's pixels, bit-identical to the scalar
// engine, and returns that count (0 when the matrix leaves the call to the scalar engine).
#pragma once

#include "scalar_engine/transform_arguments.hpp"

namespace sse41 {
int transform(const Transform_arguments<unsigned char>& arguments);
int transform(const Transform_arguments<unsigned short>& arguments);
}  // namespace sse41

namespace avx2 {
int transform(const Transform_arguments<unsigned char>& arguments);
int transform(const Transform_arguments<unsigned short>& arguments);
}  // namespace avx2
