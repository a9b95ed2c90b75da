#!/usr/bin/env bash
# The x87 control word may be loaded only by the block conversion and by the arithmetic scope
# that every scalar transform and matrix product runs in, never inside a kernel: a per-value
# switch (what a plain double-to-int cast compiles to) is slow and makes the speed of each kernel
# depend on where the linker places it. Usage: check_control_word_switches.sh <library>
set -eu
library="$1"
loaders=$(objdump -d --no-show-raw-insn "$library" |
    awk '/>:$/ { function_name = $2 } /\t(fldcw|fldenv|frstor|fxrstor)/ { print function_name }' |
    sed -E 's/scope([CD])[12]Ev/scope\1Ev/' | sort -u)
# The scope's constructor and destructor may be labelled by their complete- or base-object name.
expected=$(printf '%s\n' "<_Z27convert_to_int32_truncatingPKdPii>:" \
    "<_ZN20X87_arithmetic_scopeCEv>:" "<_ZN20X87_arithmetic_scopeDEv>:" | sort)
if [ "$loaders" != "$expected" ]; then
    echo "control-word loads in $library are not exactly those of the block conversion and the"
    echo "arithmetic scope; found in:"
    echo "$loaders"
    exit 1
fi
echo "control word loaded only by the block conversion and the arithmetic scope: $library"
