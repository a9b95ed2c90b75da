#!/usr/bin/env bash
# Whole-run wall time of xvr-color against ImageMagick and libvips doing the same colour matrix
# on one 24-megapixel 16-bit image, with PPM, TIFF (uncompressed) and PNG in and out. Prints a
# table of medians. Not a test: it needs `imagemagick` and `libvips-tools`, which the project
# does not install (apt-get install imagemagick libvips-tools).
#
#   bench/image_tools_bench.sh [RUNS] [PROGRAM]      defaults: 5, build/bin/xvr-color
#
# The machine may be shared: the load average before and after is printed with the table.
set -eu
runs="${1:-5}"
program="$(realpath "${2:-build/bin/xvr-color}")"
work="${XVR_BENCH_DIR:-/tmp/xvr-color-bench}"
for tool in convert vips; do
    command -v "$tool" >/dev/null || { echo "needs $tool: apt-get install imagemagick libvips-tools" >&2; exit 1; }
done
mkdir -p "$work" && cd "$work"

# A 6000 x 4000 16-bit image with smooth areas and noise in the low bits, like a photograph.
if [ ! -f in.ppm ]; then
    convert -size 6000x4000 -seed 7 plasma:fractal -depth 16 -attenuate 0.3 +noise Gaussian in.ppm
    convert in.ppm in.png
    convert in.ppm -compress none in.tif
fi
# The same matrix for all three: rows give red, green, blue.
matrix="1.2 -0.1 -0.1 -0.1 1.2 -0.1 -0.1 -0.1 1.2"
printf '3 3\n1.2 -0.1 -0.1\n-0.1 1.2 -0.1\n-0.1 -0.1 1.2\n' > matrix.txt
scratch="$(mktemp -d /dev/shm/xvr-bench-XXXXXX)"
trap 'rm -rf "$scratch"' EXIT

xvr_color() { "$program" "in.$1" -o "out_xvr.$1" --matrix "${matrix// /,}" -q; }
imagemagick() { convert "in.$1" -color-matrix "$matrix" "out_im.$1"; }
# vips recomb yields float samples; PNG and PPM saving makes them 16-bit, a TIFF would stay
# float, so the TIFF run casts them (through vips' own format in memory, /dev/shm).
libvips() {
    if [ "$1" = tif ]; then
        vips recomb in.tif "$scratch/t.v" matrix.txt && vips cast "$scratch/t.v" out_vips.tif ushort
    else
        vips recomb "in.$1" "out_vips.$1" matrix.txt
    fi
}

median_seconds() { # command format
    local times=() start end
    for _ in $(seq "$runs"); do
        start=$(date +%s.%N); "$1" "$2"; end=$(date +%s.%N)
        times+=("$(echo "$end - $start" | bc)")
    done
    printf '%s\n' "${times[@]}" | sort -n | awk '{a[NR]=$1} END {m=(NR%2)?a[(NR+1)/2]:(a[NR/2]+a[NR/2+1])/2; printf "%.2f", m}'
}

echo "load average before: $(cut -d' ' -f1-3 /proc/loadavg); $runs runs each, median wall seconds"
printf '| format in and out | xvr-color | ImageMagick | libvips | xvr-color / faster other |\n|---|---|---|---|---|\n'
for format in ppm tif png; do
    ours=$(median_seconds xvr_color "$format")
    im=$(median_seconds imagemagick "$format")
    vips=$(median_seconds libvips "$format")
    ratio=$(echo "$ours $im $vips" | awk '{f=($2<$3)?$2:$3; printf "%.2f", $1/f}')
    printf '| %s | %s s | %s s | %s s | %s |\n' "$format" "$ours" "$im" "$vips" "$ratio"
done
echo "load average after: $(cut -d' ' -f1-3 /proc/loadavg)"
ls -l out_xvr.* out_im.* out_vips.* | awk '{print $5, $9}'
