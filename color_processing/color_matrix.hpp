// The processor's 3x3 colour matrix: nine floats, row-major; row 0 yields red, row 1 green,
// row 2 blue, and the columns weight the red, green and blue inputs.
#pragma once

using Color_matrix = float[9];

void set_identity(Color_matrix& matrix);

// Replaces M by M x A. Products and sums are carried in x87 extended precision and each element
// is rounded to float once, when stored, so that a chain of appends loses as little as a single
// product would. A may be M itself.
void append_matrix(Color_matrix& matrix, const float* appended);
