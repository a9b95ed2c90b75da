// The --version text: the tool's version, the library version it was built with and the image
// libraries it reads and writes files with.
#pragma once

#include <string>

namespace xvr_color {

std::string version_text();

} // namespace xvr_color
