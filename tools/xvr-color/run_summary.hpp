// The lines xvr-color prints about a run: what it read, what it did, at which vector level,
// how fast, and what it wrote.
#pragma once

#include "correction_plan.hpp"
#include "image.hpp"

#include <string>
#include <vector>

namespace xvr_color {

std::string describe_input(const std::string& input_path, const Image& image);
std::string describe_correction(const Correction_plan& plan);
// "N transforms of P pixels in T ms: X megapixels per second".
std::string describe_throughput(std::size_t pixels, int transforms, double seconds);
std::string describe_output(const std::string& output_path, const Image& image);

} // namespace xvr_color
