#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test. Needs neither sensor nor display.
#
#   scripts/test.sh              the optimised build
#   scripts/test.sh --sanitize   with address and undefined-behaviour sanitizers
#   scripts/test.sh --threads    tests of workers, hand-off and shutdown with the thread sanitizer
#   scripts/test.sh --long       the long versions of tests that have one
#   further arguments go to ctest, for example: scripts/test.sh -R command_line
#
# That no test was found is a failure. What a test skipped is listed at the end.
# shellcheck source=lib/setup.sh
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"

preset=release folder=build targets=() select=()
while [ $# -gt 0 ]; do
    case $1 in
    --sanitize) preset=asan folder=build-asan ;;
    --threads)
        preset=tsan folder=build-tsan targets=(--target lumeno_threads_tests)
        select=(-L threads)
        ;;
    --long) export LUMENO_LONG_TESTS=1 ;;
    *) break ;;
    esac
    shift
done

require_packages "${build_packages[@]}" "${test_packages[@]}"
build_preset "$preset" "$folder" "${targets[@]}"

# Else what an earlier run skipped would be listed when this one finds no test.
rm -f "$folder/Testing/Temporary/LastTest.log"
status=0
ctest --test-dir "$folder" --output-on-failure --no-tests=error --parallel 2 "${select[@]}" "$@" ||
    status=$?
say_skipped_tests "$folder/Testing/Temporary/LastTest.log"
exit "$status"
