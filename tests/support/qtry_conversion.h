#pragma once

// Included before everything else in the tests, see CMakeLists.txt beside it. From Qt 6.5 on the
// waiting checks (QTRY_VERIFY, QTRY_COMPARE, ...) turn a time of 64 bits into an int inside the
// test that uses them, which -Wconversion reports as that test's own. This is the same step with
// the conversion written out.

#include <QtTest/qtestcase.h>

#include <chrono>

#undef QTRY_IMPL
#define QTRY_IMPL(expr, timeoutAsGiven)                                                            \
    const int qt_test_timeoutValue = [&] {                                                         \
        using namespace std::chrono_literals;                                                      \
        return static_cast<int>(std::chrono::milliseconds{timeoutAsGiven}.count());                \
    }();                                                                                           \
    const int qt_test_step = qt_test_timeoutValue < 350 ? qt_test_timeoutValue / 7 + 1 : 50;       \
    {QTRY_LOOP_IMPL(expr, qt_test_timeoutValue, qt_test_step)} QTRY_TIMEOUT_DEBUG_IMPL(            \
        expr, qt_test_timeoutValue, qt_test_step)
