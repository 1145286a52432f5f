#!/usr/bin/env bash
# Makes this tree use a real Kinect v2: finds the installed libfreenect2, builds against it, lets you
# open the sensor, and says what is left to do. Can be run again.
#
#   scripts/setup-kinect.sh            libfreenect2 is in $HOME/freenect2 or in the system
#   scripts/setup-kinect.sh FOLDER     libfreenect2 is installed below FOLDER
#
# Only the udev rule, and packages that are missing, need sudo.
given=${1:-}
[ -z "$given" ] || given=$(realpath -m -- "$given")
# shellcheck source=lib/setup.sh
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"

rule=packaging/70-kinect-v2.rules
installed_rule=/etc/udev/rules.d/70-kinect-v2.rules

fail() {
    say "$*"
    exit 1
}

if [ $# -gt 1 ]; then
    fail "Usage: scripts/setup-kinect.sh [FOLDER], where FOLDER is the one that libfreenect2 is installed below."
fi

if [ -n "$given" ]; then
    [ -f "$given/include/libfreenect2/libfreenect2.hpp" ] ||
        fail "No libfreenect2 is installed below $given: include/libfreenect2/libfreenect2.hpp is not there."
    if [ -e .libfreenect2 ] && [ ! -L .libfreenect2 ]; then
        fail "The folder .libfreenect2 of this tree holds another libfreenect2: move it away first."
    fi
    [ "$given" -ef .libfreenect2 ] || ln -sfn -- "$given" .libfreenect2
fi

require_packages "${build_packages[@]}" || fail "The packages that the program is built with could not be installed."
build_preset release build --target lumeno-control-center lumeno-doctor || fail "The program could not be built."
if ! grep -q '^LUMENO_SENSOR:[A-Z]*=libfreenect2$' build/CMakeCache.txt; then
    fail "libfreenect2 was not found: install it as README.md says under \"A real Kinect v2\", then run this again."
fi

install_rule() {
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            fail "The udev rule needs root, and there is no sudo: as root, copy $rule to $installed_rule and plug the sensor in again."
        as_root=(sudo)
    fi
    say "Copying $rule to $installed_rule, so that whoever sits at this machine may open the sensor."
    "${as_root[@]}" install -D -m 644 "$rule" "$installed_rule" ||
        fail "The udev rule could not be installed: as root, copy $rule to $installed_rule."
    if command -v udevadm >/dev/null && [ -S /run/udev/control ]; then
        say "Telling udev about it."
        if ! { "${as_root[@]}" udevadm control --reload &&
            "${as_root[@]}" udevadm trigger --subsystem-match=usb --attr-match=idVendor=045e; }; then
            fail "udev did not take the rule: plug the sensor in again, or restart the machine."
        fi
    else
        say "udev does not run here; the rule counts from the next start of the machine."
    fi
}
if cmp -s "$rule" "$installed_rule"; then
    say "The udev rule is installed already."
else
    install_rule
fi

say "The set-up is done; scripts/run.sh uses the sensor. What lumeno-doctor sees:"
build/lumeno-doctor || say "Each line above that begins with FAULT says what is left to do."
