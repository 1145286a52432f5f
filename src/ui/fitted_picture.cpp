#include "ui/fitted_picture.h"

const QImage& FittedPicture::fit(const StreamFrame& frame, const QSize& area) {
    if (frame.identity() == fittedFrame && area == fittedArea)
        return picture;
    // The old picture goes first, so that the new one gets its warm memory.
    picture = QImage();
    QImage source = frame.image();
    if (source.format() == QImage::Format_RGB888)
        source = source.convertToFormat(QImage::Format_RGB32);
    picture = source.scaled(area, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    fittedFrame = frame.identity();
    fittedArea = area;
    return picture;
}
