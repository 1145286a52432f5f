#pragma once

#include <QImage>

/// Every pixel differs from its neighbours; `seed` makes another picture of the same kind.
inline QImage patternedImage(const QSize& size, QImage::Format format, int seed = 0) {
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y,
                           qRgba((x * 7 + seed) & 255, (y * 5 + x * y) & 255, (x ^ y) & 255,
                                 255 - ((x + y) & 63)));
    }
    return image.convertToFormat(format);
}
