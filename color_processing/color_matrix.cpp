#include "color_matrix.hpp"

#include "scalar_engine/x87_arithmetic_scope.hpp"

void set_identity(Color_matrix& matrix)
{
    for (int element = 0; element < 9; ++element) matrix[element] = 0.0f;
    matrix[0] = 1.0f;
    matrix[4] = 1.0f;
    matrix[8] = 1.0f;
}

void append_matrix(Color_matrix& matrix, const float* appended)
{
    // Extended precision and round to nearest, whatever the caller's control word.
    const X87_arithmetic_scope arithmetic;
    // All of A is read before anything is written, so that A may alias M.
    long double a[9];
    for (int element = 0; element < 9; ++element) a[element] = appended[element];

    for (int row = 0; row < 3; ++row) {
        float* const m = matrix + 3 * row;
        const long double m0 = m[0];
        const long double m1 = m[1];
        const long double m2 = m[2];
        for (int column = 0; column < 3; ++column) {
            // Summed from zero in this order; starting from zero also turns a -0 result into +0.
            long double sum = 0.0L;
            sum += m0 * a[column];
            sum += m1 * a[3 + column];
            sum += m2 * a[6 + column];
            m[column] = static_cast<float>(sum);
        }
    }
}
