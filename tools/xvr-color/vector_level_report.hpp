// Which vector level a processor uses. The library chooses it from the processor's CPUID bits
// (or takes the forced level) and falls back when a vector library is missing; its interface
// does not tell, so the tool repeats the CPUID decision and looks at which vector libraries
// the library has loaded.
#pragma once

#include "options.hpp"

#include "modules/loaded_vector_library.hpp"

#include <string>

namespace xvr_color {

struct Vector_level_report {
    bool automatic = true;
    int chosen_level = 0; // detected (auto) or forced
    Loaded_vector_library sse;
    Loaded_vector_library avx2;

    // The level whose code runs the bulk of the pixels: 2 or 1 when that vector library is
    // loaded and started, else the scalar level 0.
    int level_in_use() const;
    std::string description() const;
};

// Throws Usage_error when a forced level is above the detected one: the vector library of such a
// level would run instructions this processor does not have.
void require_supported_level(const Vector_choice& choice);

// Call while a processor exists: the library loads its vector libraries per processor.
Vector_level_report report_vector_level(const Vector_choice& choice);

} // namespace xvr_color
