#!/usr/bin/env bash
# Lets libFuzzer look for inputs that crash the program's readers and painters, hang them, or break
# what they promise.
#
#   scripts/fuzz.sh [SECONDS [TARGET...]]    each target for that long (default 15), one at a time
#
# Targets are the files fuzz/<target>_fuzz.cpp. They start from fuzz/seeds/<target> and go on from
# what earlier runs found, in build-fuzz/corpus. A finding is written to build-fuzz/findings and
# makes the script fail. To keep one for good, mend what it shows and copy it to
# fuzz/seeds/<target>: from then on every test run replays it.
# shellcheck source=lib/setup.sh
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"

seconds=${1:-15}
[[ $seconds =~ ^[1-9][0-9]*$ ]] || {
    say "usage: scripts/fuzz.sh [SECONDS [TARGET...]]"
    exit 2
}
shift || true
if [ $# -eq 0 ]; then
    for file in fuzz/*_fuzz.cpp; do
        file=${file##*/}
        set -- "$@" "${file%_fuzz.cpp}"
    done
fi

require_packages "${build_packages[@]}" "${fuzz_packages[@]}"
build_preset fuzz build-fuzz --target "${@/#/fuzz_}"

export QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8
export LSAN_OPTIONS=suppressions=$PWD/tests/leaks.supp:print_suppressions=0
failed=()
for target in "$@"; do
    corpus=build-fuzz/corpus/$target findings=build-fuzz/findings/$target
    log=build-fuzz/$target.log
    mkdir -p "$corpus" "$findings"
    options=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=4096 -print_final_stats=1
        -artifact_prefix="$findings/")
    [ ! -f "fuzz/dictionaries/$target.dict" ] ||
        options+=(-dict="fuzz/dictionaries/$target.dict")
    if build-fuzz/"fuzz_$target" "${options[@]}" "$corpus" "fuzz/seeds/$target" >"$log" 2>&1; then
        last=$(grep -E '^#[0-9]+.*cov:' "$log" | tail -n 1)
        runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
        coverage=$(grep -oE 'cov: [0-9]+' <<<"$last" || true)
        printf '%-20s %9s inputs  %s  nothing found\n' "$target" "$runs" "$coverage"
    else
        printf '%-20s FOUND SOMETHING: %s\n' "$target" "$log"
        tail -n 40 "$log" >&2
        failed+=("$target")
    fi
done
[ ${#failed[@]} -eq 0 ]
