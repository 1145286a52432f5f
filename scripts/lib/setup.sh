# Sourced by the scripts beside it: what the project needs from the distribution, and how to get it.
# Runs in the project's root afterwards.
# shellcheck shell=bash
# shellcheck disable=SC2034 # the lists of packages are for whoever sources this

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

build_packages=(g++ cmake ninja-build pkg-config qt6-base-dev libopencv-dev opencv-data
    fonts-dejavu-core)
test_packages=(xvfb xdotool python3)
lint_packages=(clang-format clang-tidy shellcheck python3)
bench_packages=(libbenchmark-dev)
fuzz_packages=(clang libclang-rt-dev)
package_packages=(dpkg-dev file)
check_packages=(desktop-file-utils appstream man-db lintian systemd)
system_packages=(debootstrap xvfb xdotool imagemagick)
soak_packages=(xvfb xdotool gnuplot-nox python3)

say() { printf '%s\n' "$*" >&2; }

# require_packages PACKAGE...: installs those that are missing. Where there is no apt-get it says
# what is needed and goes on, since the same things may be there under other names.
require_packages() {
    local missing=() package
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "This system has no apt-get. Needed, under Debian's names: $*"
        return
    fi
    for package in "$@"; do
        dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed ||
            missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            say "Missing packages, and neither root nor sudo to install them: ${missing[*]}"
            return 1
        fi
        as_root=(sudo)
    fi
    say "Installing: ${missing[*]}"
    "${as_root[@]}" apt-get update -q >&2
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -q --no-install-recommends "${missing[@]}" >&2
}

# say_sensor_library LOG: what the configuration said about the sensor library, warnings included.
say_sensor_library() {
    awk '/^-- Sensor library: / { print substr($0, 4); next }
         /^CMake Warning at cmake\/Sensor\.cmake/ { warning = "Warning:"; next }
         warning != "" && /^(Call Stack|$)/ { print warning; warning = ""; next }
         warning != "" { sub(/^ +/, ""); gsub(/  +/, " "); warning = warning " " $0 }' "$1" >&2
}

# build_preset PRESET FOLDER [cmake --build arguments]: configures and builds; quiet unless it fails,
# except for which sensor library was chosen.
build_preset() {
    local preset=$1 folder=$2 log
    shift 2
    mkdir -p "$folder"
    log=$folder/build.log
    say "Building ($preset); the log is in $log"
    if cmake --preset "$preset" >"$log" 2>&1; then
        say_sensor_library "$log"
        cmake --build "$folder" "$@" >>"$log" 2>&1 && return
    fi
    tail -n 60 "$log" >&2
    say "The build failed; all of its output is in $log"
    return 1
}

# say_skipped_tests LOG: one line for each test function that the tests of a ctest log skipped, with
# its reason. Qt Test writes both, the reason perhaps over several lines.
say_skipped_tests() {
    [ -f "$1" ] || return 0
    local skipped
    skipped=$(sed -n 's/^SKIP *: \(.*\)/  \1/p' "$1" | sort -u)
    [ -z "$skipped" ] || say "Skipped:"$'\n'"$skipped"
}
