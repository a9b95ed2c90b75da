// Entry of the scalar engine: processes the pixels of a record from `start` to its end with the
// one kernel that matches the record's options.
#pragma once

#include "transform_arguments.hpp"

template <typename T>
void scalar_process(const Transform_arguments<T>& arguments, int start);

extern template void scalar_process<unsigned short>(const Transform_arguments<unsigned short>&, int);
extern template void scalar_process<unsigned char>(const Transform_arguments<unsigned char>&, int);
