#!/usr/bin/env bash
# Installs what is missing, builds the enrolment tool and starts it with the arguments given: without
# one its window, with one a command (`scripts/enroll.sh --help` lists them).
#
# It works where scripts/run.sh starts the program, so that the samples lie where the program reads
# them. Without libfreenect2 that is build/demo, and the sensor is the built-in virtual room.
called_from=$PWD
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"

require_packages "${build_packages[@]}"
build_preset release build --target lumeno-enroll
tool=$PWD/build/lumeno-enroll

# Pictures are named from where the person stands.
arguments=()
for argument in "$@"; do
    if [ -e "$called_from/$argument" ] && [ "${argument#-}" = "$argument" ]; then
        argument=$called_from/$argument
    fi
    arguments+=("$argument")
done

if grep -q '^LUMENO_SENSOR:[A-Z]*=virtual_kinect$' build/CMakeCache.txt &&
    [ -z "${LUMENO_VIRTUAL_KINECT+set}" ]; then
    say "Using the virtual room, since libfreenect2 is not installed; README.md says how to use a real Kinect v2."
    mkdir -p build/demo
    cd build/demo
    export LUMENO_VIRTUAL_KINECT=room
fi
exec "$tool" ${arguments[@]+"${arguments[@]}"}
