#!/usr/bin/env bash
# Runs a program under valgrind's memcheck: any invalid access, use of uninitialised memory or
# leak fails the test. Valgrind needs the i386 C library's debug symbols to run a 32-bit program;
# without them (or without valgrind) the test is skipped with exit code 77.
# Usage: run_under_memcheck.sh <program> [arguments...]
set -u
command -v valgrind >/dev/null 2>&1 || { echo "valgrind is not installed: skipped"; exit 77; }
log=$(mktemp)
trap 'rm -f "$log"' EXIT
valgrind -q --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite \
    --log-file="$log" "$@"
status=$?
if grep -q "Fatal error at startup" "$log"; then
    echo "valgrind cannot run 32-bit programs here (install libc6-dbg:i386): skipped"
    exit 77
fi
cat "$log"
exit $status
