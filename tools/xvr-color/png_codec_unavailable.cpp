// Built instead of the lodepng codec when lodepng was not found at configure time, so that the
// rest of the tool (netpbm files, the library, the test chart) still works.
#include "png_codec.hpp"

#include "tool_error.hpp"

namespace xvr_color {

namespace {

[[noreturn]] void report_missing_png_support(const std::string& what)
{
    throw Tool_error(what + ": this xvr-color was built without PNG support because lodepng "
                            "was not found; run scripts/setup-debian.sh (liblodepng-dev:i386), "
                            "reconfigure and rebuild, or use .ppm or .pam files");
}

} // namespace

void require_png_support()
{
    report_missing_png_support("no PNG support");
}

Image decode_png(const std::vector<std::uint8_t>&, const std::string& name, bool)
{
    report_missing_png_support("cannot read " + name);
}

std::string png_support_description()
{
    return "built without PNG support";
}

std::vector<std::uint8_t> encode_png(const Image&, unsigned)
{
    report_missing_png_support("cannot write PNG");
}

void write_png(Output_file&, Image&&, unsigned)
{
    report_missing_png_support("cannot write PNG");
}

} // namespace xvr_color
