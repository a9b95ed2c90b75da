#include "version_text.hpp"

#include "png_codec.hpp"
#include "tiff_codec.hpp"

namespace xvr_color {

std::string version_text()
{
    return std::string("xvr-color ") + XVR_COLOR_VERSION + " (libcorvane_xvr_color_processing " +
           XVR_COLOR_VERSION + ", 32-bit x86)\nPNG: " + png_support_description() +
           "\nTIFF: " + tiff_support_description() + "\n";
}

} // namespace xvr_color
