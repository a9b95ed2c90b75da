#!/usr/bin/env bash
# Properties of one built vector library: a 32-bit i386 shared object with its SONAME and no
# run-time search path, exporting exactly its four entry points, and whose initialize (with
# everything it calls) uses no SSE or AVX register, since it runs on processors that may have
# neither. Usage: check_vector_library.sh <library file> <sse|avx2> [function instead of initialize]
set -eu
library="$1"
kind="$2"
failed=0
fail() { echo "FAILED: $*"; failed=1; }

elf=$(readelf -h -d "$library")
grep -Eq 'Class:[[:space:]]+ELF32' <<<"$elf" || fail "not a 32-bit ELF"
grep -Eq 'Type:[[:space:]]+DYN' <<<"$elf" || fail "not a shared object"
grep -Eq 'Machine:[[:space:]]+Intel 80386' <<<"$elf" || fail "not built for Intel 80386"
grep -q "Library soname: \[libcorvane_xvr_color_processing_vector_${kind}.so.1\]" <<<"$elf" || fail "SONAME"
grep -Eq 'RPATH|RUNPATH' <<<"$elf" && fail "carries a run-time search path"

expected=$(printf '%s\n' "nq_color_processing_transform_16_bit_output_vector_${kind}" \
    "nq_color_processing_transform_8_bit_output_vector_${kind}" \
    "nq_color_processing_vector_${kind}_module_initialize" \
    "nq_color_processing_vector_${kind}_module_terminate" | sort)
exported=$(nm -D --defined-only "$library" | awk '$2 ~ /^[TDBRVW]$/ {sub(/@.*/, "", $3); print $3}' | sort)
[ "$exported" = "$expected" ] || fail "exports differ from the four entry points:"$'\n'"$exported"

# Functions reachable from initialize through direct calls and jumps, then any vector register
# in them.
start="${3:-nq_color_processing_vector_${kind}_module_initialize}"
reach=$(objdump -d --no-show-raw-insn "$library" | awk -v start="$start" '
    /^[0-9a-f]+ <[^>]+>:$/ { name = $2; gsub(/[<>:]/, "", name); next }
    name != "" && NF > 0 {
        body[name] = body[name] $0 "\n"
        if (match($0, /(call|j[a-z]+) +[0-9a-f]+ <[^>]+>/)) {
            callee = substr($0, RSTART, RLENGTH); sub(/.*</, "", callee); sub(/>.*/, "", callee)
            sub(/\+0x[0-9a-f]+$/, "", callee)
            calls[name] = calls[name] " " callee
        }
    }
    END {
        queue[1] = start; seen[start] = 1; count = 1
        for (k = 1; k <= count; ++k) {
            f = queue[k]
            if (!(f in body)) { print "MISSING " f; continue }
            if (body[f] ~ /%[xy]mm[0-9]/) print "VECTOR " f
            n = split(calls[f], callees, " ")
            for (j = 1; j <= n; ++j) if (!(callees[j] in seen)) { seen[callees[j]] = 1; queue[++count] = callees[j] }
        }
        print "REACHED " count
    }')
grep -q '^VECTOR\|^MISSING' <<<"$reach" && fail "$start reaches vector code: $(grep '^VECTOR\|^MISSING' <<<"$reach" | tr '\n' ' ')"

[ $failed -eq 0 ] && echo "libcorvane_xvr_color_processing_vector_${kind}: i386, SONAME, four exports, baseline initialize"
exit $failed
