#pragma once

#include <QImage>

#include <memory>

/// Hands out RGB888 images whose pixels come from buffers that are used again. A fresh buffer of
/// 6 MB costs more in page faults than a frame's conversion does.
///
/// A buffer returns when the last copy of its image is gone, on whichever thread that happens, also
/// after the pool itself is gone. Every member may be called on any thread. At most `idleLimit`
/// buffers that nobody uses are kept; how many are in use is up to those who hold images.
class ImagePool {
public:
    explicit ImagePool(int idleLimit = 4);
    ~ImagePool();
    ImagePool(const ImagePool&) = delete;
    ImagePool& operator=(const ImagePool&) = delete;

    /// An image of that size in pixels with undefined content; null if a side is less than 1 or
    /// there is no memory for it.
    QImage take(int width, int height);

    /// How many images that were taken still exist, copies not counted.
    int inUse() const;

private:
    struct Shelf;
    std::shared_ptr<Shelf> shelf;
};
