#!/usr/bin/env bash
# Leaves the program running on the virtual room, with a sensor that fails now and then, a voice
# service that comes and goes and somebody who changes the view, and watches it once a second:
# memory, open handles, threads, processor, pictures shown and the newest texts.
#
#   scripts/soak.sh MINUTES [FOLDER]
#
# Writes samples.tsv, log.txt and curves.png to FOLDER (default build/soak) and prints the figures.
# Fails when memory, handles or threads grow, when the picture stands still for longer than the
# sensor's faults explain, or when the program does not end by itself with status 0.
# shellcheck source=lib/setup.sh
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"

minutes=${1:-}
[[ $minutes =~ ^[1-9][0-9]{0,4}$ ]] || {
    say "usage: scripts/soak.sh MINUTES [FOLDER]"
    exit 2
}
out=${2:-build/soak}
require_packages "${build_packages[@]}" "${soak_packages[@]}"
build_preset release build
mkdir -p "$out"
out=$(cd "$out" && pwd)
root=$PWD
program=$root/build/lumeno-control-center-virtual
[ -x "$program" ] || program=$root/build/lumeno-control-center

place=$(mktemp -d)
jobs_to_end=()
# shellcheck disable=SC2317 # the trap calls it
clean_up() {
    local job
    for job in "${jobs_to_end[@]}"; do
        kill "$job" 2>/dev/null || true
    done
    rm -rf "$place"
}
trap clean_up EXIT
trap 'exit 1' INT TERM
mkdir -p "$place/home" "$place/work" "$place/screen"

# For 3 s in every minute something else is wrong with the sensor's frames.
faults() {
    local kinds=(silent missing=depth null-data=color zero-size=ir wrong-bytes=color rgbx missing=ir)
    local minute first list=slow-stop=1000
    for ((minute = 0; minute < minutes; ++minute)); do
        first=$((minute * 1800 + 900))
        list+=",${kinds[minute % ${#kinds[@]}]}@$first-$((first + 89))"
    done
    echo "$list"
}

# 40 s with a voice service, 20 s without.
voice_feed() {
    trap 'kill $(jobs -p) 2>/dev/null; exit 0' TERM
    while true; do
        "$root/scripts/fake-voice.sh" --home "$place/home" --seconds 40 >/dev/null &
        wait $! || true
        sleep 20 &
        wait $! || true
    done
}

# Another view every 15 s.
change_views() {
    local window key
    trap 'exit 0' TERM
    window=$(xdotool search --sync --onlyvisible --name '^Lumeno Control Center$' | head -n 1)
    xdotool windowmove "$window" 0 0 windowsize "$window" 1600 1000
    while true; do
        for key in 5 7 1 6 2 3 4; do
            xdotool windowfocus "$window" key --window "$window" "$key" 2>/dev/null || true
            sleep 15 &
            wait $! || true
        done
    done
}

Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp -fbdir "$place/screen" \
    3>"$place/display" 2>/dev/null &
jobs_to_end+=($!)
for ((i = 0; i < 200; ++i)); do
    [ ! -s "$place/display" ] || break
    sleep 0.1
done
[ -s "$place/display" ] || {
    say "Xvfb did not start"
    exit 1
}
DISPLAY=:$(cat "$place/display")
export DISPLAY QT_QPA_PLATFORM=xcb LC_ALL=C.UTF-8

(cd "$place/work" && "$root/build/write-owner-samples" faces/tavin) >/dev/null
say "Running for $minutes minutes; samples, log and curves are in $out"
(
    cd "$place/work" || exit
    HOME=$place/home LUMENO_VIRTUAL_KINECT=room LUMENO_VIRTUAL_KINECT_FAULTS=$(faults) \
        exec "$program" --auto-quit-ms $((minutes * 60000))
) >/dev/null 2>"$out/log.txt" &
program_pid=$!
jobs_to_end+=("$program_pid")
voice_feed &
jobs_to_end+=($!)
change_views &
jobs_to_end+=($!)
python3 "$root/scripts/lib/soak_sampler.py" watch "$program_pid" \
    "$place/screen/Xvfb_screen0" "$out/log.txt" "$out/samples.tsv" &
jobs_to_end+=($!)

status=0
wait "$program_pid" || status=$?

gnuplot <<PLOT
set terminal pngcairo size 1400,1400 font "DejaVu Sans,10"
set output "$out/curves.png"
set multiplot layout 5,1 title "$minutes minutes on the virtual room"
set grid; set key left top; set xlabel "seconds"; set datafile separator "\t"
set yrange [0:*]; set offsets 0, 0, graph 0.2, 0
data = "$out/samples.tsv"
set ylabel "MiB"
plot data using 1:2 with lines title "resident memory", \
     data using 1:3 with lines title "proportional memory"
set ylabel "handles"; plot data using 1:4 with lines title "open handles"
set ylabel "threads"; plot data using 1:5 with lines title "threads"
set ylabel "processors"; plot data using 1:6 with lines title "processor time in a second"
set ylabel "pictures"; plot data using 1:7 with lines title "pictures shown in a second"
unset multiplot
PLOT

verdict=0
python3 scripts/lib/soak_sampler.py judge "$out/samples.tsv" "$out/log.txt" || verdict=1
grep -a 'Qt Kinect streams stopped after frames' "$out/log.txt" ||
    { echo "FAILED: the sensor's worker never said that it stopped" && verdict=1; }
if [ "$status" -ne 0 ]; then
    echo "FAILED: the program ended with status $status"
    verdict=1
fi
exit "$verdict"
