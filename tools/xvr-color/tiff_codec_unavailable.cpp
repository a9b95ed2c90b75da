// Built instead of the libtiff codec when libtiff was not found at configure time, so that the
// rest of the tool still works.
#include "tiff_codec.hpp"

#include "tool_error.hpp"

namespace xvr_color {

namespace {

[[noreturn]] void report_missing_tiff_support(const std::string& what)
{
    throw Tool_error(what + ": this xvr-color was built without TIFF support because libtiff was "
                            "not found; run scripts/setup-debian.sh (it unpacks libtiff into "
                            ".deps/i386), reconfigure and rebuild, or use .png or .ppm files");
}

} // namespace

void require_tiff_support()
{
    report_missing_tiff_support("no TIFF support");
}

std::string tiff_support_description()
{
    return "built without TIFF support";
}

Image decode_tiff(const std::vector<std::uint8_t>&, const std::string& name)
{
    report_missing_tiff_support("cannot read " + name);
}

Image decode_tiff_file(int, const std::string& name)
{
    report_missing_tiff_support("cannot read " + name);
}

std::vector<std::uint8_t> encode_tiff(const Image&, Tiff_compression)
{
    report_missing_tiff_support("cannot write TIFF");
}

void write_tiff_file(const Image&, Tiff_compression, int)
{
    report_missing_tiff_support("cannot write TIFF");
}

} // namespace xvr_color
