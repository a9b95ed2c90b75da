#include "chart_defaults.hpp"

namespace xvr_color {

Matrix default_chart_matrix()
{
    const double saturation = 1.25;
    const double luma[3] = {0.2126, 0.7152, 0.0722};
    Matrix matrix{};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            double keep = row == column ? saturation : 0.0;
            matrix[3 * row + column] = static_cast<float>(keep + (1.0 - saturation) * luma[column]);
        }
    }
    return matrix;
}

Curve default_chart_output_curve()
{
    Curve curve;
    curve.kind = Curve_kind::srgb;
    return curve;
}

} // namespace xvr_color
