#include "png_codec.hpp"

namespace xvr_color {

bool looks_like_png(const std::vector<std::uint8_t>& bytes)
{
    static const std::uint8_t signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    if (bytes.size() < sizeof signature) {
        return false;
    }
    for (std::size_t i = 0; i < sizeof signature; ++i) {
        if (bytes[i] != signature[i]) {
            return false;
        }
    }
    return true;
}

} // namespace xvr_color
