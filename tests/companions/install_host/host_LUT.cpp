// Uses the installed table library directly: a curve applied to samples, and a refused size
// whose exception crosses from the library into this separately built program.
#include <corvane_xvr_LUT.h>

#include <cstdio>
#include <stdexcept>

int main()
{
    LUT_handle table = nq_create_LUT_test(256, true);
    for (int i = 0; i < 256; ++i) nq_get_LUT_data(table)[i] = i * 257;
    const std::uint16_t input[3] = {0, 128, 1000};
    std::uint16_t output[3] = {};
    bool ok = nq_LUT_transform_16(table, input, output, 3) == NQ_LUT_NO_ERROR && output[0] == 0 &&
              output[1] == 128 * 257 && output[2] == 65535;
    nq_destroy_LUT(table);
    try {
        nq_destroy_LUT(nq_create_LUT_test(3, false));
        ok = false;
    } catch (const std::invalid_argument&) {
    }
    std::printf("host_LUT: %s\n", ok ? "ok" : "failed");
    return ok ? 0 : 1;
}
