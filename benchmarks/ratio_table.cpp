#include "ratio_table.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <vector>

namespace {

std::vector<RatioRow>& rows() {
    static std::vector<RatioRow> all;
    return all;
}

/// Prepared when the first of a row's two sides runs, so that filtered rows cost nothing.
class LazyContest {
public:
    explicit LazyContest(const RatioRow& row) : prepare(row.prepare) {}
    const Contest& get() {
        if (!contest)
            contest = prepare();
        return *contest;
    }

private:
    std::function<Contest()> prepare;
    std::optional<Contest> contest;
};

std::string title(const RatioRow& row) {
    return row.what + " / " + row.against;
}

/// Collects the processor time of every repetition by benchmark name, in nanoseconds.
class Collector : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& report) override {
        for (const Run& run : report) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                times[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
        }
    }

    std::optional<double> median(const std::string& name) {
        const auto found = times.find(name);
        if (found == times.end() || found->second.empty())
            return std::nullopt;
        std::vector<double>& all = found->second;
        std::sort(all.begin(), all.end());
        const std::size_t middle = all.size() / 2;
        return all.size() % 2 == 1 ? all[middle] : (all[middle - 1] + all[middle]) / 2;
    }

private:
    std::map<std::string, std::vector<double>> times;
};

void registerSide(const RatioRow& row, const char* side,
                  const std::shared_ptr<LazyContest>& contest,
                  std::function<void()> Contest::*member) {
    auto* const registered =
        benchmark::RegisterBenchmark((title(row) + " / " + side).c_str(),
                                     [contest, member](benchmark::State& state) {
                                         const std::function<void()>& once = contest->get().*member;
                                         once(); // a first time pays for pages and caches
                                         for ([[maybe_unused]] const auto turn : state)
                                             once();
                                     })
            ->MeasureProcessCPUTime()
            ->Unit(benchmark::kNanosecond);
    if (row.repetitions > 0)
        registered->Repetitions(row.repetitions);
}

/// Prints one row; true unless its target was missed.
bool printRow(const RatioRow& row, double ours, double rival) {
    const double ratio = ours / rival;
    const bool kept = !row.atMost || ratio <= *row.atMost;
    char target[16] = "-";
    if (row.atMost)
        std::snprintf(target, sizeof target, "%.2f", *row.atMost);
    std::printf("%-44s %10.3f %-48s %10.3f %7.3f %7s  %s\n", row.what.c_str(), ours / 1e6,
                row.against.c_str(), rival / 1e6, ratio, target,
                row.atMost ? (kept ? "kept" : "MISSED") : "");
    return kept;
}

} // namespace

RatioTable::Claim::Claim(RatioRow row) {
    rows().push_back(std::move(row));
}

int RatioTable::run(int argc, char** argv) {
    std::stable_sort(rows().begin(), rows().end(),
                     [](const RatioRow& a, const RatioRow& b) { return a.what < b.what; });
    // Defaults first, so that the command line can override them.
    std::vector<std::string> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1,
                     {"--benchmark_enable_random_interleaving=true", "--benchmark_repetitions=25",
                      "--benchmark_min_time=0.02"});
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    int count = static_cast<int>(pointers.size());
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data()))
        return 1;

    for (const RatioRow& row : rows()) {
        const auto contest = std::make_shared<LazyContest>(row);
        registerSide(row, "ours", contest, &Contest::ours);
        registerSide(row, "rival", contest, &Contest::rival);
    }
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    benchmark::ClearRegisteredBenchmarks(); // widgets of a contest go before the application does

    std::printf("%-44s %10s %-48s %10s %7s %7s\n", "what", "ours ms", "against", "rival ms",
                "ratio", "at most");
    bool allKept = true;
    bool any = false;
    for (const RatioRow& row : rows()) {
        const auto ours = collector.median(title(row) + " / ours");
        const auto rival = collector.median(title(row) + " / rival");
        if (!ours || !rival)
            continue;
        any = true;
        allKept = printRow(row, *ours, *rival) && allKept;
    }
    if (!any)
        std::printf("nothing ran: no row matches the filter\n");
    else
        std::printf("%s\n", allKept ? "every target was kept" : "a target was MISSED");
    return any && allKept ? 0 : 1;
}
