#!/usr/bin/env bash
# Runs a program under one of valgrind's tools and fails on any report: memcheck (invalid
# access, use of uninitialised memory, definite leak) or helgrind (data race, lock misuse).
# Valgrind needs the i386 C library's debug symbols to run a 32-bit program; without them (or
# without valgrind) the test is skipped with exit code 77.
# Usage: run_under_valgrind.sh <memcheck|helgrind> <program> [arguments...]
set -u
tool="$1"
shift
command -v valgrind >/dev/null 2>&1 || { echo "valgrind is not installed: skipped"; exit 77; }
case "$tool" in
    memcheck) options=(--leak-check=full --errors-for-leak-kinds=definite) ;;
    helgrind) options=() ;;
    *) echo "unknown valgrind tool $tool"; exit 2 ;;
esac
log=$(mktemp)
trap 'rm -f "$log"' EXIT
valgrind -q --tool="$tool" --error-exitcode=99 "${options[@]}" --log-file="$log" "$@"
status=$?
if grep -q "Fatal error at startup" "$log"; then
    echo "valgrind cannot run 32-bit programs here (install libc6-dbg:i386): skipped"
    exit 77
fi
cat "$log"
exit $status
