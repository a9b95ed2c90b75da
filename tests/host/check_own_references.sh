#!/usr/bin/env bash
# No relocation of the library may refer to a name that the library itself defines and exports:
# such a reference would go through the dynamic linker, which lets a host's global or function
# of the same name take its place. Usage: check_own_references.sh <library>
set -eu
library="$1"
defined=$(readelf --dyn-syms -W "$library" |
    awk '$7 != "UND" && ($5 == "GLOBAL" || $5 == "WEAK") { sub(/@.*/, "", $8); print $8 }' | sort -u)
relocated=$(readelf -r -W "$library" | awk '$3 ~ /^R_386_/ && NF >= 5 { sub(/@.*/, "", $5); print $5 }' |
    sort -u)
for name in logger load_shared_library get_function_handle unload_shared_library; do
    echo "$defined" | grep -qx "$name" || { echo "$name is not exported by $library"; exit 1; }
done
self_references=$(comm -12 <(echo "$defined") <(echo "$relocated"))
if [ -n "$self_references" ]; then
    echo "relocations of $library refer to its own exported names:"
    echo "$self_references"
    exit 1
fi
echo "$(echo "$defined" | wc -l) exported names, none of them reached through a relocation: $library"
