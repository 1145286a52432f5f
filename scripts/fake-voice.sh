#!/usr/bin/env bash
# Plays the voice service for people who want to watch the window's lights, text and notes without
# one: writes a pid file and, several times a second, a direction event whose angle sweeps across
# the room, from -60 degrees at the left edge of the picture to +60 at the right one and back.
#
#   scripts/fake-voice.sh [--home DIR] [--seconds N] [--rate N] [--period N]
#
#   --home DIR   whose files to write (default: your own home, $HOME); below it the files are
#                .local/state/lumeno/auralis-live.pid and auralis-live-event.json
#   --seconds N  end by itself after N seconds (default 0: runs until Ctrl-C)
#   --rate N     events a second, 1 to 50 (default 5)
#   --period N   seconds for one sweep there and back, 1 to 3600 (default 24)
#
# It refuses to start where a voice service is already running. Files are written aside and renamed,
# so that no reader ever sees half of one. At the end it removes its pid file and leaves the last
# event, as a service that was stopped does.
#
# Start it in one terminal and the program in another.
set -euo pipefail

usage() {
    sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "$0"
}

fail() {
    echo "fake-voice: $1" >&2
    exit 2
}

# number NAME VALUE LEAST MOST: a whole number in that range, or the end.
number() {
    [[ $2 =~ ^[0-9]{1,9}$ ]] || fail "$1 wants a whole number, not '$2'"
    (($((10#$2)) >= $3 && $((10#$2)) <= $4)) || fail "$1 wants a number from $3 to $4"
    echo $((10#$2))
}

home=${HOME:-}
seconds=0
rate=5
period=24
while (($# > 0)); do
    case $1 in
        -h | --help) usage && exit 0 ;;
        --home | --seconds | --rate | --period) (($# > 1)) || fail "$1 wants a value" ;;
        *) fail "unknown argument '$1' (see --help)" ;;
    esac
    case $1 in
        --home) home=$2 ;;
        --seconds) seconds=$(number "$1" "$2" 0 999999999) ;;
        --rate) rate=$(number "$1" "$2" 1 50) ;;
        --period) period=$(number "$1" "$2" 1 3600) ;;
    esac
    shift 2
done
[[ -n $home ]] || fail "no home folder: HOME is not set, and there is no --home"

folder=$home/.local/state/lumeno
pid_file=$folder/auralis-live.pid
event_file=$folder/auralis-live-event.json
mkdir -p "$folder"
other=$(cat "$pid_file" 2>/dev/null || true)
if [[ $other =~ ^[0-9]+$ ]] && kill -0 "$other" 2>/dev/null; then
    fail "a voice service is running already (process $other)"
fi

# put FILE: what stands on the input becomes the whole content of FILE at once.
put() {
    cat >"$1.$$.new"
    mv -f "$1.$$.new" "$1"
}

pause=
clean_up() {
    [[ -z $pause ]] || kill "$pause" 2>/dev/null || true
    rm -f "$pid_file.$$.new" "$event_file.$$.new"
    [[ $(cat "$pid_file" 2>/dev/null || true) != "$$" ]] || rm -f "$pid_file"
}
trap clean_up EXIT
trap 'exit 0' INT TERM HUP

# Tenths of a degree at STEP of a sweep of STEPS: a triangle that starts in the middle.
angle_at() {
    local at=$((($1 * 2400 / $2 + 600) % 2400))
    ((at < 1200)) || at=$((2400 - at))
    echo $((at - 600))
}

# Tenths as a decimal number.
decimal() {
    local sign=
    (($1 >= 0)) || sign=-
    echo "$sign$((${1#-} / 10)).$((${1#-} % 10))"
}

write_event() {
    put "$event_file" <<JSON
{
  "status": "running",
  "live_processing": true,
  "direction_angle_degrees": $(decimal "$1"),
  "direction_confidence": 0.82,
  "direction_low_confidence": false,
  "error": ""
}
JSON
}

echo $$ | put "$pid_file"
echo "fake-voice: writing $event_file, Ctrl-C ends"
interval=$(printf '0.%03d' $((1000 / rate)))
[[ $rate != 1 ]] || interval=1
for ((step = 0; seconds == 0 || SECONDS < seconds; ++step)); do
    write_event "$(angle_at $step $((period * rate)))"
    # In the background, so that a signal is answered at once and not after the pause.
    sleep "$interval" &
    pause=$!
    wait "$pause" || true
    pause=
done
