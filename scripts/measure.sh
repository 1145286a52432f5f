#!/usr/bin/env bash
# Runs the whole program on the virtual room and prints medians of three runs in each of three views:
# frames painted per second, delay, how soon people are marked, processor shares, memory.
#
#   scripts/measure.sh [SECONDS [VIEWS [SENSOR]]]
#
# SECONDS of each run are 120 unless given. VIEWS are "combo follow rgb". SENSOR is the room, or a
# recording's folder, for example one without people; a recording says nothing of how soon.
# shellcheck source=lib/setup.sh
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"

seconds=${1:-120}
views=${2:-combo follow rgb}
sensor=${3:-room}
[ "$sensor" = room ] || sensor=$(realpath "$sensor")
require_packages "${build_packages[@]}" "${bench_packages[@]}" xvfb xauth
build_preset bench build-bench --target live_measure write-owner-samples

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
build-bench/write-owner-samples "$work/faces/tavin" >/dev/null
program=$PWD/build-bench/live_measure
export LUMENO_VIRTUAL_KINECT=$sensor HOME=$work

median() { sort -n | awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'; }

for view in $views; do
    for run in 1 2 3; do
        (cd "$work" && xvfb-run -a -s '-screen 0 1920x1080x24' "$program" "$view" "$seconds" \
            >"$work/$view.$run" 2>"$work/log") || { tail "$work/log" >&2; exit 1; }
    done
    printf '\n%s (median of three runs of %s s)\n' "$view" "$seconds"
    awk '{print $1}' "$work/$view".? | sort -u | while read -r figure; do
        printf '  %-40s %s\n' "$figure" \
            "$(awk -v f="$figure" '$1 == f {print $2}' "$work/$view".? | median)"
    done
done
