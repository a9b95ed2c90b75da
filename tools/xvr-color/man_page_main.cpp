// Writes the manual page xvr-color.1 (made from the --help text) to standard output; run by
// the build, which installs the page.
#include "man_page.hpp"
#include "options.hpp"

#include <iostream>

int main()
{
    std::cout << xvr_color::man_page_from_help(xvr_color::usage_text(), XVR_COLOR_VERSION);
    return std::cout.good() ? 0 : 1;
}
