#!/usr/bin/env bash
# The x87 control word may be loaded only by the block conversion, never inside a kernel: a
# per-value switch (what a plain double-to-int cast compiles to) is slow and makes the speed of
# each kernel depend on where the linker places it. Usage: check_control_word_switches.sh <library>
set -eu
library="$1"
loaders=$(objdump -d --no-show-raw-insn "$library" |
    awk '/>:$/ { function_name = $2 } /\tfldcw/ { print function_name }' | sort | uniq -c)
expected_function="<_Z27convert_to_int32_truncatingPKdPii>:"
if [ "$(echo "$loaders" | awk '{ print $2 }' | sort -u)" != "$expected_function" ]; then
    echo "control-word loads outside the block conversion in $library:"
    echo "$loaders"
    exit 1
fi
echo "control word loaded only by the block conversion: $library"
