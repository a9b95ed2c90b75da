// The built-in transfer curves. A curve names how a signal is encoded: on the input side the
// tool decodes with it (encoded file values to linear light, before the matrix), on the output
// side it encodes with it (linear light to encoded file values, after the clamp). So
// "--input-curve srgb --output-curve srgb" corrects an sRGB image in linear light.
#pragma once

#include <string>

namespace xvr_color {

enum class Curve_kind { linear, gamma, srgb };

struct Curve {
    Curve_kind kind = Curve_kind::linear;
    double gamma = 1.0; // exponent of a power curve: encoded = linear^(1/gamma)

    std::string name() const;
};

// "linear", "srgb" or "gamma:G" with G a number from 0.1 to 10; throws Usage_error otherwise.
Curve parse_curve(const std::string& text);

// Linear light (0..1) to the encoded signal (0..1).
double encode_with(const Curve& curve, double linear);

// Encoded signal (0..1) to linear light (0..1).
double decode_with(const Curve& curve, double encoded);

} // namespace xvr_color
