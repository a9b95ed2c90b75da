#!/usr/bin/env bash
# Configures (once) and builds everything into build/ (or the folder given as $1), two jobs at a
# time: the kernel family dominates and the machine this project targets has two cores.
# NQ_WARNINGS_AS_ERRORS=ON (as CI sets it) makes every compiler warning an error.
set -eu
cd "$(dirname "$0")/.."
build_dir="${1:-build}"
if [ ! -f "$build_dir/build.ninja" ]; then
    cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=Release
fi
if [ -n "${NQ_WARNINGS_AS_ERRORS:-}" ]; then
    cmake "$build_dir" -DNQ_WARNINGS_AS_ERRORS="$NQ_WARNINGS_AS_ERRORS" >/dev/null
fi
cmake --build "$build_dir" -j "${NQ_BUILD_JOBS:-2}"
