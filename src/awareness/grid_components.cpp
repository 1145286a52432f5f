#include "awareness/grid_components.h"

#include <algorithm>

namespace {

/// Runs with, for each of them, a run of the same component that comes no later: following these
/// leads to the component's first run.
struct LinkedRuns {
    std::vector<CellRun> runs;
    std::vector<int> earlier;

    explicit LinkedRuns(std::size_t expected) {
        runs.reserve(expected);
        earlier.reserve(expected);
    }

    int first(int run) {
        while (earlier[index(run)] != run) {
            earlier[index(run)] = earlier[index(earlier[index(run)])]; // halve the way for the next
            run = earlier[index(run)];
        }
        return run;
    }

    void join(int a, int b) {
        a = first(a);
        b = first(b);
        earlier[index(std::max(a, b))] = std::min(a, b);
    }

    void append(int y, int begin, int end) {
        earlier.push_back(static_cast<int>(runs.size()));
        runs.push_back({y, begin, end});
    }

    static std::size_t index(int run) { return static_cast<std::size_t>(run); }
};

void appendRunsOfRow(const OccupancyGrid& grid, int y, LinkedRuns& linked) {
    const std::uint64_t* row = grid.row(y);
    std::uint64_t before = 0; // the cell to the left of the word's first
    int begin = -1;           // of a run that has not ended yet
    for (std::size_t word = 0; word < grid.words(); ++word) {
        // A bit for each cell that differs from its left neighbour: a run begins or has ended.
        std::uint64_t edges = row[word] ^ (row[word] << 1 | before);
        before = row[word] >> 63;
        for (; edges != 0; edges &= edges - 1) {
            const int x = static_cast<int>(word) * 64 + std::countr_zero(edges);
            if (begin >= 0)
                linked.append(y, begin, x);
            begin = begin < 0 ? x : -1;
        }
    }
    if (begin >= 0)
        linked.append(y, begin, grid.width());
}

/// Joins the runs `above` … `current` - 1 of one row with those from `current` on of the next row
/// where they share a column.
void joinRows(LinkedRuns& linked, int above, int current) {
    const int aboveEnd = current;
    const int currentEnd = static_cast<int>(linked.runs.size());
    while (above < aboveEnd && current < currentEnd) {
        const CellRun& upper = linked.runs[LinkedRuns::index(above)];
        const CellRun& lower = linked.runs[LinkedRuns::index(current)];
        if (upper.begin < lower.end && lower.begin < upper.end)
            linked.join(above, current);
        const int upperEnd = upper.end;
        const int lowerEnd = lower.end;
        above += upperEnd <= lowerEnd ? 1 : 0;
        current += lowerEnd <= upperEnd ? 1 : 0;
    }
}

void addRun(GridComponent& component, std::vector<CellRun>& runs, int index) {
    const CellRun& run = runs[LinkedRuns::index(index)];
    if (component.firstRun < 0) {
        component = {0, run.begin, run.end - 1, run.y, run.y, index, index};
    } else {
        runs[LinkedRuns::index(component.lastRun)].next = index;
        component.lastRun = index;
    }
    component.cells += run.end - run.begin;
    component.minX = std::min(component.minX, run.begin);
    component.maxX = std::max(component.maxX, run.end - 1);
    component.maxY = run.y; // runs come from top to bottom
}

} // namespace

GridComponents gridComponents(const OccupancyGrid& grid) {
    LinkedRuns linked(static_cast<std::size_t>(grid.width()) *
                      static_cast<std::size_t>(grid.height()) / 8);
    int above = 0;
    for (int y = 0; y < grid.height(); ++y) {
        const int current = static_cast<int>(linked.runs.size());
        appendRunsOfRow(grid, y, linked);
        joinRows(linked, above, current);
        above = current;
    }

    GridComponents result;
    result.runs = std::move(linked.runs);
    std::vector<int>& componentOf = linked.earlier; // a first run's link becomes its component
    for (int run = 0; run < static_cast<int>(result.runs.size()); ++run) {
        const int earlier = componentOf[LinkedRuns::index(run)];
        if (earlier == run) {
            componentOf[LinkedRuns::index(run)] = static_cast<int>(result.components.size());
            result.components.emplace_back();
        } else {
            componentOf[LinkedRuns::index(run)] = componentOf[LinkedRuns::index(earlier)];
        }
        const int component = componentOf[LinkedRuns::index(run)];
        addRun(result.components[LinkedRuns::index(component)], result.runs, run);
    }
    return result;
}
