#!/usr/bin/env bash
# Installs what is missing, builds the enrolment tool and starts it with the arguments given: without
# one its window, with one a command (`scripts/enroll.sh --help` lists them).
#
# The samples go to where scripts/run.sh starts the program. Without libfreenect2 that is build/demo,
# and the sensor is the built-in virtual room. Pictures are named from where the person stands.
called_from=$PWD
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"

require_packages "${build_packages[@]}"
build_preset release build --target lumeno-enroll
tool=$PWD/build/lumeno-enroll

export LUMENO_HOME=$PWD
if grep -q '^LUMENO_SENSOR:[A-Z]*=virtual_kinect$' build/CMakeCache.txt &&
    [ -z "${LUMENO_VIRTUAL_KINECT+set}" ]; then
    say "Using the virtual room, since libfreenect2 is not installed; README.md says how to use a real Kinect v2."
    export LUMENO_HOME=$PWD/build/demo LUMENO_VIRTUAL_KINECT=room
fi
cd "$called_from"
exec "$tool" "$@"
