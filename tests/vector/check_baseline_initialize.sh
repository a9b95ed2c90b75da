#!/usr/bin/env bash
# A vector library's initialize runs on processors that may have neither SSE nor AVX: it, and
# every function it reaches through direct calls and jumps, must use no vector register.
# Usage: check_baseline_initialize.sh <library> <entry point>
set -eu
objdump -d --no-show-raw-insn "$1" | awk -v start="$2" '
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
