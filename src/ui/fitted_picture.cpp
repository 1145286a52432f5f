#include "ui/fitted_picture.h"

#include "ui/smooth_shrinking.h"

const QImage& FittedPicture::fit(const StreamFrame& frame, const QSize& pixels) {
    if (frame.identity() == fittedFrame && pixels == fittedPixels)
        return picture;
    const QImage source = frame.image();
    picture = QImage(); // its memory is the best for the next one
    picture = smoothlyShrunk(source, pixels);
    if (picture.isNull()) {
        const bool threeBytes = source.format() == QImage::Format_RGB888;
        picture = (threeBytes ? source.convertToFormat(QImage::Format_RGB32) : source)
                      .scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    fittedFrame = frame.identity();
    fittedPixels = pixels;
    return picture;
}
