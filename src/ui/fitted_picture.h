#pragma once

#include "ui/stream_frame.h"

#include <QImage>
#include <QSize>

/// A frame scaled to an area, kept until another frame, part or area is asked for: most repaintings
/// of a stream only have new overlays.
class FittedPicture {
public:
    /// `frame` scaled smoothly to fit `area` (pixels), keeping its aspect ratio and at least 1 x 1:
    /// the pixels that QImage::scaled() gives from the frame as RGB32. Null when the frame is null.
    const QImage& fit(const StreamFrame& frame, const QSize& area);

private:
    StreamFrame::Identity fittedFrame;
    QSize fittedArea;
    QImage picture;
};
