#pragma once

#include "awareness/occupancy_grid.h"

#include <vector>

/// Occupied cells side by side in one row of the grid: columns begin … end - 1.
struct CellRun {
    int y = 0;
    int begin = 0;
    int end = 0;
    int next = -1; ///< Index of the next run of the same component, -1 for none.
};

/// A 4-connected component of occupied cells; all bounds are inclusive and in cells.
struct GridComponent {
    int cells = 0;
    int minX = 0;
    int maxX = 0;
    int minY = 0;
    int maxY = 0;
    int firstRun = -1; ///< Index of its first run.
    int lastRun = -1;
};

/// The components of a grid in the order in which a scan row by row meets them.
struct GridComponents {
    std::vector<CellRun> runs;
    std::vector<GridComponent> components;
};

/// Diagonal neighbours are not connected. Works on runs of cells instead of single cells: one
/// person is a few dozen runs. No recursion, whatever the shape.
GridComponents gridComponents(const OccupancyGrid& grid);
