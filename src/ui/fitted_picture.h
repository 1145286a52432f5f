#pragma once

#include "frames/stream_frame.h"

#include <QImage>
#include <QSize>

/// A frame scaled to a size, kept until another frame, part or size is asked for: most repaintings
/// of a stream only have new overlays.
class FittedPicture {
public:
    /// `frame` scaled smoothly to exactly `pixels` (device pixels, both at least 1): the pixels
    /// that QImage::scaled() gives from the frame as RGB32. Null when the frame is null.
    const QImage& fit(const StreamFrame& frame, const QSize& pixels);

private:
    StreamFrame::Identity fittedFrame;
    QSize fittedPixels;
    QImage picture;
};
