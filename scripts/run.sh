#!/usr/bin/env bash
# Installs what is missing, builds the program and starts it with the switches given.
#
# With libfreenect2 the program opens the Kinect v2 that is plugged in. Without it the sensor
# stand-in is linked; unless a mock switch or LUMENO_VIRTUAL_KINECT asks for something else, that
# shows the built-in virtual room.
called_from=$PWD
# shellcheck source=lib/setup.sh
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"

require_packages "${build_packages[@]}"
build_preset release build --target lumeno-control-center lumeno-enroll write-owner-samples
program=$PWD/build/lumeno-control-center

asks_for_no_sensor() {
    local switch
    for switch in "$@"; do
        case $switch in --mock | --no-kinect) return 0 ;; esac
    done
    return 1
}

if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}${QT_QPA_PLATFORM:-}" ]; then
    say "No display found (neither DISPLAY nor WAYLAND_DISPLAY is set); the window needs one."
fi

if ! grep -q '^LUMENO_SENSOR:[A-Z]*=virtual_kinect$' build/CMakeCache.txt ||
    asks_for_no_sensor "$@"; then
    exec "$program" "$@"
fi
if [ -n "${LUMENO_VIRTUAL_KINECT+set}" ]; then
    # A recording's folder is named from where the person stands, the program runs in the root.
    if [ -d "$called_from/$LUMENO_VIRTUAL_KINECT" ] && [ -n "$LUMENO_VIRTUAL_KINECT" ]; then
        export LUMENO_VIRTUAL_KINECT=$called_from/$LUMENO_VIRTUAL_KINECT
    fi
    exec "$program" "$@"
fi

say "Showing the virtual room, since libfreenect2 is not installed; README.md says how to use a real Kinect v2."
mkdir -p build/demo
cd build/demo || exit
[ -d faces/tavin ] || ../write-owner-samples faces/tavin
export LUMENO_VIRTUAL_KINECT=room
exec "$program" "$@"
