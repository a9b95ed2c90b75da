// The correction that a run without an input file applies to the test chart, part by part:
// each part is used only when the command line does not set it.
#pragma once

#include "curves.hpp"
#include "options.hpp"

namespace xvr_color {

constexpr const char* default_chart_file_name = "xvr-color-chart.png";
constexpr int default_chart_output_bits = 8;

// Raises saturation by a quarter around the Rec. 709 luminance, so greys stay grey and the
// saturated patches are pushed past the ends of the range, where the clamp shows.
Matrix default_chart_matrix();

// Encodes the linear chart values for display.
Curve default_chart_output_curve();

} // namespace xvr_color
