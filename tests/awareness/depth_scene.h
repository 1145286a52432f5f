#pragma once

#include "frames/depth_frame.h"

#include <QRect>

#include <algorithm>

/// A raw depth frame that a test paints: millimetres, 0 for no reading.
struct DepthScene {
    int width;
    int height;
    QList<float> mm;

    explicit DepthScene(int frameWidth = 512, int frameHeight = 424, float background_mm = 0.0F)
        : width(frameWidth), height(frameHeight), mm(qsizetype(width) * height, background_mm) {}

    DepthFrame frame() const { return {mm, width, height}; }

    /// Sets the pixels of `box` that lie in the frame.
    void fill(const QRect& box, float depth_mm) {
        const QRect inside = box & QRect(0, 0, width, height);
        for (int y = inside.top(); y <= inside.bottom(); ++y)
            std::fill_n(mm.begin() + qsizetype(y) * width + inside.left(), inside.width(),
                        depth_mm);
    }

    /// Sets whole 4x4-pixel cells; `cells` is in cells.
    void fillCells(const QRect& cells, float depth_mm) {
        fill(QRect(cells.topLeft() * 4, cells.size() * 4), depth_mm);
    }

    /// Somebody who stands in the room: head, shoulders, arms a little off the body, legs apart.
    /// `centerX`, `top` and `tall`, the person's height, are in pixels.
    void stand(int centerX, int top, int tall, float depth_mm) {
        const int head = tall / 7;
        const int shoulders = tall / 4;
        const int neck = top + head;
        const int chest = neck + head / 4;
        const int hips = chest + tall * 2 / 5;
        const int left = centerX - shoulders / 2;
        const int leg = shoulders / 3;
        fill(QRect(centerX - head / 2, top, head, head), depth_mm - 20.0F);
        fill(QRect(centerX - head / 4, neck, head / 2, head / 4), depth_mm);
        fill(QRect(left, chest, shoulders, hips - chest), depth_mm);
        fill(QRect(left, hips, leg, top + tall - hips), depth_mm + 30.0F);
        fill(QRect(left + shoulders - leg, hips, leg, top + tall - hips), depth_mm + 30.0F);
    }
};
