#include "tiff_codec.hpp"

namespace xvr_color {

bool looks_like_tiff(const std::vector<std::uint8_t>& bytes)
{
    if (bytes.size() < 4) {
        return false;
    }
    // "II" or "MM", then 42 (classic) or 43 (BigTIFF) in that byte order.
    const bool little = bytes[0] == 'I' && bytes[1] == 'I' && (bytes[2] == 42 || bytes[2] == 43) &&
                        bytes[3] == 0;
    const bool big = bytes[0] == 'M' && bytes[1] == 'M' && bytes[2] == 0 &&
                     (bytes[3] == 42 || bytes[3] == 43);
    return little || big;
}

} // namespace xvr_color
