#!/usr/bin/env bash
# Runs one test as ctest does, and adds two verdicts that the test itself does not give:
#
#   status 77 when a test function was skipped, so that ctest says "Skipped" and not "Passed"
#   status 1  when the test took more processor time than its budget
#
#   run_test.sh BUDGET_MS COMMAND...    a budget of 0 is none
#
# A budget is in processor time, which depends far less than wall-clock time on what else the
# machine does. A status of the test other than 0 is handed on and no further verdict given.
set -u
budget_ms=$1
shift

place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
"$@" 2>&1 | tee "$place/output"
status=${PIPESTATUS[0]}
[ "$status" -eq 0 ] || exit "$status"

# The second line of "times" is what the processes that ended have used: "0m1.234s 0m0.056s". It
# must run in this shell, not in a pipe of its own.
times >"$place/times"
read -r user system < <(tail -n 1 "$place/times")
milliseconds() {
    local minutes=${1%m*} rest=${1#*m}
    rest=${rest%s}
    echo $((minutes * 60000 + ${rest%[.,]*} * 1000 + 10#${rest#*[.,]}))
}
used_ms=$(($(milliseconds "$user") + $(milliseconds "$system")))
if [ "$budget_ms" -gt 0 ] && [ "$used_ms" -gt "$budget_ms" ]; then
    echo "BUDGET: took $used_ms ms of processor time, $budget_ms ms are allowed." \
        "Make it quicker, or label it gui, e2e or slow."
    exit 1
fi

# Qt Test prints one such line for each function that called QSKIP.
! grep -q '^SKIP   : ' "$place/output" || exit 77
