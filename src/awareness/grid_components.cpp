#include "awareness/grid_components.h"

#include <algorithm>

namespace {

/// Runs with, for each of them, a run of the same component that comes no later: following these
/// leads to the component's first run.
struct LinkedRuns {
    std::vector<CellRun> runs;
    std::vector<int> earlier;

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

/// First column at or after `x` whose cell is `occupied`; the grid's width if there is none.
int nextColumn(const std::uint64_t* row, int x, int width, bool occupied) {
    const std::uint64_t flip = occupied ? 0 : ~std::uint64_t{0};
    while (x < width) {
        const std::uint64_t rest = (row[x / 64] ^ flip) >> (x % 64);
        if (rest != 0)
            return std::min(x + std::countr_zero(rest), width);
        x += 64 - x % 64;
    }
    return width;
}

void appendRunsOfRow(const OccupancyGrid& grid, int y, LinkedRuns& linked) {
    const std::uint64_t* row = grid.row(y);
    int begin = nextColumn(row, 0, grid.width(), true);
    while (begin < grid.width()) {
        const int end = nextColumn(row, begin, grid.width(), false);
        linked.append(y, begin, end);
        begin = nextColumn(row, end, grid.width(), true);
    }
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
        if (upper.end <= lower.end)
            ++above;
        else
            ++current;
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
    LinkedRuns linked;
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
