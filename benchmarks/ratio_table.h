#pragma once

#include <functional>
#include <optional>
#include <string>

/// One table of speed claims, each the ratio of two medians within one run.
///
/// To add a claim, put this into the file of your hot path (one file per path, listed in
/// CMakeLists.txt) and nothing else anywhere:
///
///     const RatioTable::Claim claim({
///         .what = "colour conversion",
///         .against = "memcpy of the same bytes",
///         .atMost = 1.3,
///         .prepare = [] {
///             auto state = std::make_shared<State>(); // frames, widgets: made once, not measured
///             return Contest{[state] { ...ours, once... }, [state] { ...the rival, once... }};
///         },
///     });
///
/// The process's processor time is what counts, so that a busy machine disturbs less and work that
/// Qt spreads over threads of its own is not free. Results must not be thrown away by the compiler:
/// hand them to benchmark::DoNotOptimize. A QApplication on the offscreen platform exists, OpenCV
/// has one thread.
struct Contest {
    std::function<void()> ours;
    std::function<void()> rival;
};

struct RatioRow {
    std::string what;             ///< Names the row; unique together with `against`.
    std::string against;          ///< The rival.
    std::optional<double> atMost; ///< The target; without one the row only informs.
    std::function<Contest()> prepare;
    int repetitions =
        0; ///< Fewer than usual, for sides that take a second; 0 for the usual number.
};

class RatioTable {
public:
    /// Adds a row when it is constructed, before main() begins.
    struct Claim {
        explicit Claim(RatioRow row);
    };

    /// Runs all rows that Google Benchmark's --benchmark_filter lets through, ours and the rivals
    /// interleaved at random, and prints the table. Returns the process's exit status: 0 when every
    /// target was kept, 1 when one was missed or nothing ran.
    static int run(int argc, char** argv);
};
