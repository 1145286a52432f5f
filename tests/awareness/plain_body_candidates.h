#pragma once

#include "awareness/body_candidates.h"

#include <algorithm>
#include <cmath>
#include <vector>

/// The body search written in the most obvious way: every cell counted by itself, a flood fill with
/// a stack of cells. What the fast one must equal, and what it is timed against.
namespace plain {

inline bool isValid(float mm) {
    return std::isfinite(mm) && mm >= 1600.0F && mm <= 3800.0F;
}

struct Blob {
    int cells = 0;
    int minX = 0;
    int maxX = 0;
    int minY = 0;
    int maxY = 0;
    std::vector<float> samples;
};

class Search {
public:
    Search(const QList<float>& depth_mm, int width, int height)
        : depth(depth_mm), w(width), h(height), gridW(width / 4), gridH(height / 4),
          occupied(size_t(gridW) * size_t(gridH)), visited(occupied.size()) {
        for (int cy = 0; cy < gridH; ++cy) {
            for (int cx = 0; cx < gridW; ++cx)
                occupied[at(cx, cy)] = validPixels(cx, cy) >= 4;
        }
    }

    /// Every connected group of occupied cells, in the order of the scan. Once only.
    std::vector<Blob> blobs() {
        std::vector<Blob> found;
        stack.reserve(occupied.size() / 8);
        for (int cy = 0; cy < gridH; ++cy) {
            for (int cx = 0; cx < gridW; ++cx) {
                if (occupied[at(cx, cy)] && !visited[at(cx, cy)])
                    found.push_back(grow(cx, cy));
            }
        }
        return found;
    }

    QList<BodyCandidate> candidates(const QSize& colorSize) {
        QList<BodyCandidate> found;
        for (Blob& blob : blobs())
            appendCandidate(found, blob, colorSize);
        std::stable_sort(found.begin(), found.end(),
                         [](const BodyCandidate& a, const BodyCandidate& b) {
                             return a.rect.height() > b.rect.height();
                         });
        if (found.size() > 4)
            found.resize(4);
        return found;
    }

private:
    size_t at(int cx, int cy) const { return size_t(cy) * size_t(gridW) + size_t(cx); }

    int validPixels(int cx, int cy) const {
        int valid = 0;
        for (int y = 4 * cy; y < 4 * cy + 4; ++y) {
            for (int x = 4 * cx; x < 4 * cx + 4; ++x)
                valid += isValid(depth[qsizetype(y) * w + x]) ? 1 : 0;
        }
        return valid;
    }

    void visit(int cx, int cy) {
        if (cx < 0 || cy < 0 || cx >= gridW || cy >= gridH || !occupied[at(cx, cy)] ||
            visited[at(cx, cy)])
            return;
        visited[at(cx, cy)] = 1;
        stack.push_back(int(at(cx, cy)));
    }

    Blob grow(int seedX, int seedY) {
        Blob blob{0, seedX, seedX, seedY, seedY, {}};
        visit(seedX, seedY);
        while (!stack.empty()) {
            const int cx = stack.back() % gridW;
            const int cy = stack.back() / gridW;
            stack.pop_back();
            ++blob.cells;
            blob.minX = std::min(blob.minX, cx);
            blob.maxX = std::max(blob.maxX, cx);
            blob.minY = std::min(blob.minY, cy);
            blob.maxY = std::max(blob.maxY, cy);
            const float sample = depth[qsizetype(4 * cy + 2) * w + 4 * cx + 2];
            if (isValid(sample))
                blob.samples.push_back(sample);
            visit(cx + 1, cy);
            visit(cx - 1, cy);
            visit(cx, cy + 1);
            visit(cx, cy - 1);
        }
        return blob;
    }

    bool passesGates(const Blob& blob) const {
        const int wCells = blob.maxX - blob.minX + 1;
        const int hCells = blob.maxY - blob.minY + 1;
        const double fill = double(blob.cells) / double(std::max(wCells * hCells, 1));
        return blob.cells >= 45 && blob.samples.size() >= 20 &&
               double(hCells) / std::max(wCells, 1) >= 1.05 && fill >= 0.1 && fill <= 0.92 &&
               wCells <= 0.55 * gridW && hCells <= 0.95 * gridH;
    }

    void appendCandidate(QList<BodyCandidate>& found, Blob& blob, const QSize& colorSize) const {
        if (!passesGates(blob))
            return;
        const size_t middle = blob.samples.size() / 2;
        std::nth_element(blob.samples.begin(), blob.samples.begin() + std::ptrdiff_t(middle),
                         blob.samples.end());
        const double distance_m = double(blob.samples[middle]) / 1000.0;
        const double fx0 = 4.0 * blob.minX / w;
        const double fx1 = (4.0 * blob.maxX + 4.0) / w;
        const double fy0 = 4.0 * blob.minY / h;
        const double fy1 = (4.0 * blob.maxY + 4.0) / h;
        const int bw = int((fx1 - fx0) * colorSize.width());
        const int bh = int((fy1 - fy0) * colorSize.height());
        const QRect box = QRect(int(colorSize.width() * fx0), int(colorSize.height() * fy0), bw, bh)
                              .adjusted(-bw / 5, -bh / 8, bw / 5, bh / 10) &
                          QRect(QPoint(0, 0), colorSize);
        if (box.width() < 55 || box.height() < 120)
            return;
        found.append({box, distance_m, blob.cells,
                      distance_m >= 2.2 ? QStringLiteral("far body") : QStringLiteral("mid body")});
    }

    const QList<float>& depth;
    int w;
    int h;
    int gridW;
    int gridH;
    std::vector<char> occupied;
    std::vector<char> visited;
    std::vector<int> stack;
};

inline QList<BodyCandidate> bodyCandidates(const QList<float>& depth_mm, int width, int height,
                                           const QSize& colorSize) {
    if (width < 4 || height < 4 || colorSize.width() < 1 || colorSize.height() < 1 ||
        depth_mm.size() < qint64(width) * height)
        return {};
    return Search(depth_mm, width, height).candidates(colorSize);
}

} // namespace plain
