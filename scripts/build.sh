#!/usr/bin/env bash
# Configures (once) and builds everything into build/ (or the folder given as $1), two jobs at a
# time: the kernel family dominates and the machine this project targets has two cores.
# NQ_WARNINGS_AS_ERRORS=ON (as CI sets it) makes every compiler warning an error;
# NQ_SANITIZE=ON builds with the address and undefined-behaviour sanitizers (use a folder of its
# own: NQ_SANITIZE=ON ./scripts/build.sh build-sanitized).
set -eu
cd "$(dirname "$0")/.."
build_dir="${1:-build}"
options=()
for option in NQ_WARNINGS_AS_ERRORS NQ_SANITIZE; do
    if [ -n "${!option:-}" ]; then options+=("-D$option=${!option}"); fi
done
if [ ! -f "$build_dir/build.ninja" ]; then
    cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=Release "${options[@]}"
elif [ ${#options[@]} -gt 0 ]; then
    cmake "$build_dir" "${options[@]}" >/dev/null
fi
cmake --build "$build_dir" -j "${NQ_BUILD_JOBS:-2}"
