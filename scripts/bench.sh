#!/usr/bin/env bash
# Builds optimised and prints one table of speed claims; fails when a target is missed.
#
#   scripts/bench.sh            everything
#   scripts/bench.sh depth      only the rows whose name matches the regular expression
#   further arguments are Google Benchmark's, for example: --benchmark_repetitions=51
# shellcheck source=lib/setup.sh
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"

require_packages "${build_packages[@]}" "${bench_packages[@]}"
build_preset bench build-bench --target lumeno-bench

arguments=()
for argument in "$@"; do
    case $argument in
    -*) arguments+=("$argument") ;;
    *) arguments+=("--benchmark_filter=$argument") ;;
    esac
done

# One processor, so that nothing measured moves between caches; the last one is the least busy.
pinned=()
if command -v taskset >/dev/null; then
    pinned=(taskset -c "$(($(nproc) - 1))")
    "${pinned[@]}" true 2>/dev/null || pinned=()
fi
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
    mkdir -p build-bench/runtime
    chmod 700 build-bench/runtime
    export XDG_RUNTIME_DIR=$PWD/build-bench/runtime
fi
"${pinned[@]}" build-bench/lumeno-bench "${arguments[@]}"
