#include "options.hpp"

namespace xvr_color {

std::string usage_text()
{
    return R"(Usage: xvr-color [INPUT] [-o OUTPUT] [options]

Colour-corrects an RGB image with libcorvane_xvr_color_processing. Per pixel, in this order:
input table, colour matrix, rounding, clamp, output table, shift, narrowing to the output depth.

Without INPUT it builds a 768 x 512 test chart of 16-bit samples, corrects it with a default
(a saturation matrix and the sRGB output curve to 8 bits; any option below replaces its part of
the default) and writes xvr-color-chart.png, or OUTPUT.

Files:
  INPUT                   PNG (RGB, 8 or 16 bits), PPM (P6, maxval 1..65535) or PAM (P7, DEPTH 3).
                          8-bit samples are widened to 16 bits (v x 257); other maxvals are
                          rescaled to 16 bits.
  -o, --output FILE       output file; .png, .ppm (.pnm) or .pam. Required with INPUT.
  --bits 8|16             output sample depth (default: the input's depth; 8 for the chart)

Correction:
  --matrix M              nine numbers, row by row (rows give red, green, blue; columns weight
                          red, green, blue), separated by commas or blanks, or "identity".
                          Repeatable: each is appended to the processor's matrix in the order
                          given, so the LAST one given acts on the pixels FIRST. Default: none.
  --input-curve C         input table from a curve that DEcodes the input to linear light:
                          linear, srgb, gamma:G (value^G), or none. Default: none.
  --input-table FILE      input table from a file (see below); 65536 entries.
  --output-curve C        output table from a curve that ENcodes linear light for the output:
                          linear, srgb, gamma:G (value^(1/G)), or none. Default: none.
  --output-table FILE     output table from a file; 2^(output table bits) entries.
  --output-table-bits T   an output table gets 2^T entries, T from 1 to 16 (default 16). Below 16
                          the tool appends a scale of (2^T-1)/65535 that acts after your
                          matrices, so that the matrix result indexes the whole table.
  --clamp MIN,MAX         clamp of the matrix result, for all channels, or six values
  --clamp RMIN,RMAX,GMIN,GMAX,BMIN,BMAX
                          per channel. 0..65535. Default: 0..65535, or 0..2^T-1 with an output
                          table (the clamp maximum must stay below the table size).
  --shift D | R,G,B       shift of the final values, -15..15 (positive left, negative right).
                          Default: 0; -8 for 8-bit output without an output table.
                          The tool refuses settings whose results would not fit the output
                          samples, instead of letting their high bits be dropped.

Tables from files:
  *.cube                  1D cube file (LUT_1D_SIZE, optional DOMAIN_MIN/MAX, N lines of
                          red green blue in 0..1), resampled to the table size, one per channel.
  any other name          one integer per line: the raw table entries, used for all channels.
                          Input table entries 0..65535; output table entries 0 or more.

Running:
  --vector auto|0|1|2     vector level: auto (the library detects it) or forced (0 scalar,
                          1 SSE, 2 AVX2) through the test creation call; a level above what
                          the processor supports is refused. Default: auto.
  --repeat N              run the transform N times, for timing (default 1).
  -h, --help              this text.

Exit status: 0 done, 1 failed (file, table or library problem), 2 invalid command line.
)";
}

} // namespace xvr_color
