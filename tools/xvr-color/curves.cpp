#include "curves.hpp"

#include "numbers.hpp"
#include "tool_error.hpp"

#include <cmath>
#include <sstream>

namespace xvr_color {

namespace {

// The sRGB transfer function: a linear toe joined to a 1/2.4 power segment.
constexpr double srgb_linear_limit = 0.0031308;
constexpr double srgb_encoded_limit = 0.04045;

double srgb_encode(double linear)
{
    if (linear <= srgb_linear_limit) {
        return 12.92 * linear;
    }
    return 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
}

double srgb_decode(double encoded)
{
    if (encoded <= srgb_encoded_limit) {
        return encoded / 12.92;
    }
    return std::pow((encoded + 0.055) / 1.055, 2.4);
}

double clamp_unit(double value)
{
    return value < 0.0 ? 0.0 : (value > 1.0 ? 1.0 : value);
}

} // namespace

std::string Curve::name() const
{
    switch (kind) {
    case Curve_kind::linear:
        return "linear";
    case Curve_kind::srgb:
        return "srgb";
    case Curve_kind::gamma: {
        std::ostringstream text;
        text << "gamma:" << gamma;
        return text.str();
    }
    }
    return "?";
}

Curve parse_curve(const std::string& text)
{
    Curve curve;
    if (text == "linear") {
        return curve;
    }
    if (text == "srgb") {
        curve.kind = Curve_kind::srgb;
        return curve;
    }
    const std::string prefix = "gamma:";
    if (text.compare(0, prefix.size(), prefix) == 0) {
        double exponent = 0.0;
        if (!parse_real(text.substr(prefix.size()), exponent) || exponent < 0.1 ||
            exponent > 10.0) {
            throw Usage_error("the curve '" + text + "' needs a gamma from 0.1 to 10, e.g. gamma:2.2");
        }
        curve.kind = Curve_kind::gamma;
        curve.gamma = exponent;
        return curve;
    }
    throw Usage_error("unknown curve '" + text + "': use linear, srgb or gamma:G");
}

double encode_with(const Curve& curve, double linear)
{
    linear = clamp_unit(linear);
    switch (curve.kind) {
    case Curve_kind::linear:
        return linear;
    case Curve_kind::gamma:
        return std::pow(linear, 1.0 / curve.gamma);
    case Curve_kind::srgb:
        return srgb_encode(linear);
    }
    return linear;
}

double decode_with(const Curve& curve, double encoded)
{
    encoded = clamp_unit(encoded);
    switch (curve.kind) {
    case Curve_kind::linear:
        return encoded;
    case Curve_kind::gamma:
        return std::pow(encoded, curve.gamma);
    case Curve_kind::srgb:
        return srgb_decode(encoded);
    }
    return encoded;
}

} // namespace xvr_color
