#!/usr/bin/env bash
# The core library must run on processors without SSE: it is a 32-bit i386 ELF shared object and
# its code uses no SSE/AVX register. Usage: check_baseline_isa.sh <library>
set -eu
library="$1"

header=$(od -An -tx1 -N20 "$library" | tr -d ' \n')
# ELF magic, class 1 (32-bit), little-endian, type 3 (shared object), machine 3 (Intel 80386).
[ "${header:0:8}" = "7f454c46" ] || { echo "not an ELF file: $library"; exit 1; }
[ "${header:8:2}" = "01" ] || { echo "not a 32-bit ELF: $library"; exit 1; }
[ "${header:32:4}" = "0300" ] || { echo "not a shared object: $library"; exit 1; }
[ "${header:36:4}" = "0300" ] || { echo "not built for Intel 80386: $library"; exit 1; }

vector_lines=$(objdump -d --no-show-raw-insn "$library" | grep -E '%[xy]mm[0-9]' | head -n 5 || true)
if [ -n "$vector_lines" ]; then
    echo "SSE/AVX registers used in $library:"
    echo "$vector_lines"
    exit 1
fi
echo "baseline i386 code, no SSE/AVX registers: $library"
