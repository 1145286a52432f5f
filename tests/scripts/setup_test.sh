#!/usr/bin/env bash
# What scripts/lib/setup.sh reports from logs of cmake and ctest.
#   setup_test.sh <path of setup.sh> <folder of the test's own>
set -u
work=$2
mkdir -p "$work"
# shellcheck source=../../scripts/lib/setup.sh
. "$1"
set +e
failures=0

# expect WHAT EXPECTED ACTUAL
expect() {
    if [ "$2" = "$3" ]; then
        echo "PASS: $1"
    else
        printf 'FAIL: %s\nexpected: %s\nactual:   %s\n' "$1" "$2" "$3"
        failures=$((failures + 1))
    fi
}

cat >"$work/plain.log" <<'LOG'
-- The CXX compiler identification is GNU 12.2.0
-- Sensor library: the stand-in in virtual_kinect (libfreenect2 was not found)
-- Configuring done
LOG
expect "the sensor library that was chosen" \
    "Sensor library: the stand-in in virtual_kinect (libfreenect2 was not found)" \
    "$(say_sensor_library "$work/plain.log" 2>&1)"

cat >"$work/warning.log" <<'LOG'
-- Sensor library: libfreenect2, /opt/lib/libfreenect2.so (found by pkg-config)
CMake Warning at cmake/Sensor.cmake:98 (message):
  This libfreenect2 was built without C++11 threading: waiting for a frame
  never times out.  Build it again.
Call Stack (most recent call first):
  cmake/Sensor.cmake:120 (_lumeno_warn_about_endless_wait)


CMake Warning at tests/CMakeLists.txt:3 (message):
  Something else.
LOG
expect "a warning about it in one line, and no others" \
    "Sensor library: libfreenect2, /opt/lib/libfreenect2.so (found by pkg-config)
Warning: This libfreenect2 was built without C++11 threading: waiting for a frame never times out. Build it again." \
    "$(say_sensor_library "$work/warning.log" 2>&1)"

cat >"$work/tests.log" <<'LOG'
PASS   : RoomTest::initTestCase()
SKIP   : RealPicturesTest::portrait() there is no picture
   Loc: [real_pictures_test.cpp(30)]
SKIP   : RealPicturesTest::frames(seated) there is no recording
SKIP   : RealPicturesTest::portrait() there is no picture
LOG
expect "each skipped test once, with its reason" \
    "Skipped:
  RealPicturesTest::frames(seated) there is no recording
  RealPicturesTest::portrait() there is no picture" \
    "$(say_skipped_tests "$work/tests.log" 2>&1)"
expect "nothing where nothing was skipped" "" "$(say_skipped_tests "$work/plain.log" 2>&1)"
expect "nothing without a log" "" "$(say_skipped_tests "$work/none.log" 2>&1)"

[ "$failures" -eq 0 ]
