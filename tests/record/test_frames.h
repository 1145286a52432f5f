#pragma once

#include "record/frame_set.h"

#include <cstring>
#include <vector>

/// Pixels with memory of their own.
template <typename Value>
record::FramePixels pixelsOf(const std::vector<Value>& values, int width, int height) {
    const std::size_t bytes = values.size() * sizeof(Value);
    const std::shared_ptr<unsigned char[]> memory(new unsigned char[bytes]);
    std::memcpy(memory.get(), values.data(), bytes);
    return {{memory, memory.get()}, width, height};
}

/// A small set whose pixels tell its number: all colour pixels are (10, 20, number) as blue, green
/// and red, depth 1000 + number, infrared 500 + number.
inline record::FrameSet smallSet(int number) {
    constexpr int width = 8;
    constexpr int height = 6;
    std::vector<unsigned char> color;
    for (int pixel = 0; pixel < width * height; ++pixel)
        for (const int value : {10, 20, number, 0})
            color.push_back(static_cast<unsigned char>(value));
    record::FrameSet set;
    set.color = pixelsOf(color, width, height);
    set.infrared = pixelsOf(std::vector<float>(12, 500.0F + static_cast<float>(number)), 4, 3);
    set.depth = pixelsOf(std::vector<float>(12, 1000.0F + static_cast<float>(number)), 4, 3);
    return set;
}
