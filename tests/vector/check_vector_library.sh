#!/usr/bin/env bash
# One built vector library exports its four entry points and nothing else, and its initialize,
# which runs on processors that may have neither SSE nor AVX, uses no vector register, nor does
# any function it reaches through direct calls and jumps.
# Usage: check_vector_library.sh <library> <sse|avx2>
set -eu
kind="$2"
exported=$(nm -D --defined-only "$1" | awk '$2 ~ /^[TDBRVW]$/ {sub(/@.*/, "", $3); print $3}' | LC_ALL=C sort | tr '\n' ' ')
expected="nq_color_processing_transform_16_bit_output_vector_$kind nq_color_processing_transform_8_bit_output_vector_$kind \
nq_color_processing_vector_${kind}_module_initialize nq_color_processing_vector_${kind}_module_terminate "
[ "$exported" = "$expected" ] || { echo "exports differ from the four entry points: $exported"; exit 1; }
objdump -d --no-show-raw-insn "$1" | awk -v start="nq_color_processing_vector_${kind}_module_initialize" '
    /^[0-9a-f]+ <[^>]+>:$/ { name = $2; gsub(/[<>:]/, "", name); next }
    name != "" && NF > 0 {
        body[name] = body[name] $0 "\n"
        if (match($0, /(call|j[a-z]+) +[0-9a-f]+ <[^>]+>/)) {
            callee = substr($0, RSTART, RLENGTH); sub(/.*</, "", callee); sub(/[+>].*/, "", callee)
            calls[name] = calls[name] " " callee
        }
    }
    END {
        queue[1] = start; seen[start] = 1; count = 1; bad = 0
        for (k = 1; k <= count; ++k) {
            f = queue[k]
            if (!(f in body) || body[f] ~ /%[xy]mm[0-9]/) { print "vector code or unknown function: " f; bad = 1 }
            n = split(calls[f], callees, " ")
            for (j = 1; j <= n; ++j) if (!(callees[j] in seen)) { seen[callees[j]] = 1; queue[++count] = callees[j] }
        }
        print count " functions reached from " start
        exit bad
    }'
