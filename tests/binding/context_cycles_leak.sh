#!/bin/sh
# Runs the context-cycles program under LeakSanitizer with 5 and with 100
# cycles and fails when more is left allocated after 100 than after 5: a
# leak per document lifetime grows with the count. A fixed amount kept for
# the life of the process by the system's GL, X and plugin libraries (freed
# by nobody at exit, and allocated in modules the fast unwinder cannot walk
# through) is the same in both runs and does not count.
# Usage: context_cycles_leak.sh PROGRAM SUPPRESSIONS
set -u
program=$1
suppressions=$2

leaked() { # cycles -> prints the bytes leaked; fails when the test failed
    out=$(TARNWICK_CYCLES=$1 LSAN_OPTIONS="suppressions=$suppressions:print_suppressions=0:exitcode=0" \
          "$program" 2>&1)
    status=$?
    if [ $status -ne 0 ] || ! printf '%s\n' "$out" | grep -q '^\[  PASSED  \] 1 test'; then
        printf '%s\n' "$out" >&2
        echo "context cycles: the run of $1 cycles failed (status $status)" >&2
        return 1
    fi
    printf '%s\n' "$out" | sed -n 's/^SUMMARY: LeakSanitizer: \([0-9]*\) byte.*/\1/p' | tail -1 | grep . || echo 0
}

few=$(leaked 5) || exit 1
many=$(leaked 100) || exit 1
echo "context cycles: $few bytes left after 5 cycles, $many after 100"
if [ "$many" -gt "$few" ]; then
    TARNWICK_CYCLES=100 LSAN_OPTIONS="suppressions=$suppressions:print_suppressions=0:exitcode=0" "$program" 2>&1 \
        | sed -n '/LeakSanitizer/,$p' >&2
    echo "context cycles: memory grows with the number of contexts" >&2
    exit 1
fi
