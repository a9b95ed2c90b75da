// The manual page of xvr-color, made from its --help text so that the two never disagree.
#pragma once

#include <string>

namespace xvr_color {

// roff source of xvr-color(1) for the help text given.
std::string man_page_from_help(const std::string& help, const std::string& version);

} // namespace xvr_color
