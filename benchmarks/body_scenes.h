#pragma once

#include "awareness/depth_scene.h"

#include <QSize>

#include <random>

/// Depth frames that the body pass and the awareness pass are timed on.
namespace scenes {

inline const QSize colorSize(1920, 1080);

/// Gives every valid pixel a sensor's noise and takes one in thirty away.
inline void addNoise(DepthScene& scene) {
    std::mt19937 random(3);
    std::normal_distribution<float> noise(0.0F, 12.0F);
    for (float& mm : scene.mm)
        mm = random() % 30 == 0 || mm <= 0.0F ? 0.0F : mm + noise(random);
}

/// Three people before a wall that is out of the band.
inline DepthScene threePeople() {
    DepthScene scene(512, 424, 4500.0F);
    scene.stand(110, 110, 230, 2900.0F);
    scene.stand(250, 80, 280, 2300.0F);
    scene.stand(410, 60, 320, 1900.0F);
    addNoise(scene);
    return scene;
}

/// Every second cell or so is occupied: the most runs.
inline DepthScene speckles() {
    std::mt19937 random(4);
    DepthScene scene(512, 424, 4500.0F);
    for (int y = 0; y < 106; ++y) {
        for (int x = 0; x < 128; ++x) {
            if (random() % 2 == 0)
                scene.fillCells(QRect(x, y, 1, 1), 2500.0F);
        }
    }
    return scene;
}

/// Upright stripes that hang together at their feet: the most joining of runs.
inline DepthScene comb() {
    DepthScene scene(512, 424, 4500.0F);
    for (int x = 0; x < 128; x += 2)
        scene.fillCells(QRect(x, 0, 1, 105), 2500.0F);
    scene.fillCells(QRect(0, 105, 128, 1), 2500.0F);
    return scene;
}

/// Two blobs as large as the gates let through, at depths all over the band: the most samples.
inline DepthScene twoGiants() {
    std::mt19937 random(5);
    DepthScene scene(512, 424, 0.0F);
    for (const int left : {0, 65}) {
        scene.fillCells(QRect(left, 2, 63, 100), 2500.0F);
        scene.fillCells(QRect(left, 2, 10, 54), 0.0F);
    }
    for (float& mm : scene.mm)
        mm = mm > 0.0F ? 1600.0F + float(random() % 2200000) / 1000.0F : 0.0F;
    return scene;
}

/// The same full of holes: many runs and many samples at once.
inline DepthScene sieves() {
    std::mt19937 random(6);
    DepthScene scene = twoGiants();
    for (int y = 0; y < 106; ++y) {
        for (int x = 0; x < 128; ++x) {
            if (random() % 10 < 3)
                scene.fillCells(QRect(x, y, 1, 1), 0.0F);
        }
    }
    return scene;
}

} // namespace scenes
