#!/usr/bin/env bash
# Configures (once) and builds everything into build/ (or the folder given as $1), two jobs at a
# time: the kernel family dominates and the machine this project targets has two cores.
set -eu
cd "$(dirname "$0")/.."
build_dir="${1:-build}"
if [ ! -f "$build_dir/build.ninja" ]; then
    cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=Release
fi
cmake --build "$build_dir" -j "${NQ_BUILD_JOBS:-2}"
