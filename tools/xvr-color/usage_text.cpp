#include "options.hpp"

namespace xvr_color {

// Also the source of the manual page (man_page_main.cpp): headings end in ':', option lines
// start with two blanks and the description begins in column 27.
std::string usage_text()
{
    return R"(Usage: xvr-color [INPUT] [-o OUTPUT] [options]
       xvr-color INPUT... --output-dir DIR [options]

Colour-corrects RGB images with libcorvane_xvr_color_processing. Per pixel, in this order:
input table, colour matrix, rounding, clamp, output table, shift, narrowing to the output depth.

Without INPUT it builds a 768 x 512 test chart of 16-bit samples, corrects it with a default
(a saturation matrix and the sRGB output curve to 8 bits; any option below replaces its part of
the default) and writes xvr-color-chart.png, or OUTPUT.

Files:
  INPUT                   PNG or TIFF (RGB, 8 or 16 bits), PPM (P6, maxval 1..65535) or PAM
                          (P7, DEPTH 3), recognised by their first bytes; - reads standard input.
                          8-bit samples are widened to 16 bits (v x 257); other maxvals are
                          rescaled to 16 bits.
  -o, --output FILE       output file: .png, .tif (.tiff), .ppm (.pnm) or .pam; - writes
                          standard output. Required with one INPUT.
  --output-dir DIR        write one output per INPUT into DIR (several inputs need it). A file
                          that fails is reported and skipped; the exit status is then 1.
  --name PATTERN          output names in DIR: {name} is the input's name without extension,
                          {ext} the output format's extension. Default: {name}.{ext}.
  --format FMT            output format: png, tiff, ppm or pam. Default: from the output name;
                          for standard output and --output-dir, the input's format.
  --in-place              allow an output to replace its input (refused otherwise).
  --bits 8|16             output sample depth (default: the input's depth; 8 for the chart).
                          8 bits are rounded to nearest unless --shift is given.
  --compression C         TIFF output: none (default, fastest to write and read), deflate or
                          lzw (smaller; with the horizontal predictor); all lossless.

Colour profiles:
  --keep-profile          keep the input's ICC profile although the correction changes colours.
                          It is kept anyway when only the depth changes; otherwise the tool
                          drops it and says so.
  --output-profile FILE   embed this ICC profile in the output (PNG and TIFF).

Correction:
  --matrix M              nine numbers, row by row (rows give red, green, blue; columns weight
                          red, green, blue), separated by commas or blanks, or "identity".
                          Coefficients are single-precision floats. Repeatable: each is
                          appended to the processor's matrix in the order given, so the LAST
                          one given acts on the pixels FIRST. Default: none.
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
                          Default: 0. With --bits 8 and no output table, --shift -8 keeps the
                          top byte (truncation) instead of rounding.
                          The tool refuses settings whose results would not fit the output
                          samples, instead of letting their high bits be dropped.

Tables from files:
  *.cube                  1D cube file (LUT_1D_SIZE, optional DOMAIN_MIN/MAX, N lines of
                          red green blue in 0..1), resampled to the table size, one per channel.
  any other name          one integer per line: the raw table entries, used for all channels.
                          Input table entries 0..65535; output table entries 0 or more.

Running:
  --threads N             threads for the transform of an image and for PNG compression;
                          several inputs are corrected side by side. Default: every processor.
  --vector auto|0|1|2     vector level: auto (the library detects it) or forced (0 scalar,
                          1 SSE, 2 AVX2) through the test creation call; a level above what
                          the processor supports is refused. Default: auto.
  --repeat N              run the transform N times, for timing (default 1).
  -q, --quiet             no summary and no progress line; errors and notes still show.
  -h, --help              this text.
  --version               the version and the image libraries in use.

Everything the tool reports goes to standard error; standard output carries only an image
written to -. On a terminal a progress line shows for several inputs and for large images.

Exit status: 0 done, 1 failed (file, table or library problem; a file of several), 2 invalid
command line.
)";
}

} // namespace xvr_color
