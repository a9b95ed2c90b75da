#include "vector_capability.hpp"

#include <cpuid.h>

namespace {

Cpuid_registers read_cpuid_leaf(uint32_t leaf)
{
    Cpuid_registers registers{};
    __cpuid_count(leaf, 0u, registers.eax, registers.ebx, registers.ecx, registers.edx);
    return registers;
}

}  // namespace

int detect_vector_level()
{
    return vector_level_from_cpuid(read_cpuid_leaf);
}
