#!/usr/bin/env bash
# Installs what is missing, builds everything and runs every test. Needs neither sensor nor display.
#
#   scripts/test.sh              the optimised build
#   scripts/test.sh --sanitize   with address and undefined-behaviour sanitizers
#   scripts/test.sh --threads    tests of workers, hand-off and shutdown with the thread sanitizer
#   further arguments go to ctest, for example: scripts/test.sh -R command_line
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"

preset=release folder=build select=()
case ${1:-} in
--sanitize)
    preset=asan folder=build-asan
    shift
    ;;
--threads)
    preset=tsan folder=build-tsan select=(-L threads)
    shift
    ;;
esac

require_packages "${build_packages[@]}" "${test_packages[@]}"
build_preset "$preset" "$folder"
ctest --test-dir "$folder" --output-on-failure --parallel 2 "${select[@]}" "$@"
