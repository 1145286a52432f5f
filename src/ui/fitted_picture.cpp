#include "ui/fitted_picture.h"

#include "ui/smooth_shrinking.h"

#include <utility>

namespace {

/// As QImage::scaled() has it.
QSize fittedSize(const QSize& size, const QSize& area) {
    return size.scaled(area, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

} // namespace

const QImage& FittedPicture::fit(const StreamFrame& frame, const QSize& area) {
    if (frame.identity() == fittedFrame && area == fittedArea)
        return picture;
    const QImage source = frame.image();
    picture = smoothlyShrunk(source, fittedSize(source.size(), area), std::move(picture));
    if (picture.isNull()) {
        const bool threeBytes = source.format() == QImage::Format_RGB888;
        picture = (threeBytes ? source.convertToFormat(QImage::Format_RGB32) : source)
                      .scaled(area, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    fittedFrame = frame.identity();
    fittedArea = area;
    return picture;
}
