#!/usr/bin/env bash
# What the runner of all tests makes of a test that passes, fails, skips, crashes or takes too long.
#
#   run_test_test.sh RUNNER
set -u
runner=$1
failures=0

# expect STATUS BUDGET_MS SCRIPT: how the runner must end when the test is that shell script.
expect() {
    local status
    "$runner" "$2" bash -c "$3" >/dev/null 2>&1
    status=$?
    [ "$status" -eq "$1" ] || {
        echo "FAIL: \"$3\" with a budget of $2 ms ended with $status, not $1"
        failures=$((failures + 1))
    }
}

skip='echo "SKIP   : SomeTest::someFunction() no pictures"'
busy='for ((i = 0; i < 200000; ++i)); do :; done'

expect 0 60000 'echo "PASS   : SomeTest::someFunction()"'
expect 77 60000 "$skip"
expect 3 60000 "$skip; exit 3"
expect 139 60000 'kill -SEGV $$'
expect 1 10 "$busy"
expect 1 10 "$skip; $busy"
expect 0 0 "$busy"
expect 0 60000 "$busy"

if ! "$runner" 0 bash -c 'echo one; echo two >&2' | grep -q two; then
    echo "FAIL: the test's own output is lost"
    failures=$((failures + 1))
fi
[ "$failures" -eq 0 ]
