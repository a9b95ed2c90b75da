// The lines xvr-color prints about a run: what it read, what it did, at which vector level,
// how fast, and what it wrote.
#pragma once

#include "correction_plan.hpp"
#include "image.hpp"
#include "image_files.hpp"

#include <string>
#include <vector>

namespace xvr_color {

std::string describe_input(const std::string& input_path, const Image& image);
std::string describe_correction(const Correction_plan& plan);
// "N transforms of P pixels in T ms on K threads: X megapixels per second". The time is that of
// the library's transform calls only: reading, decoding, encoding and writing are not in it.
std::string describe_throughput(std::size_t pixels, int transforms, double seconds, unsigned threads);
std::string describe_output(const std::string& output_name, const Image& image, Image_file_format format);

} // namespace xvr_color
