#pragma once

#include <QImage>
#include <QRect>
#include <memory>

/// One image of a stream: a deep copy that is made once, never changes and is shared by value. All
/// tiles that show a new image hold the same copy. Frames may be made, copied and dropped on any
/// thread.
class StreamFrame {
public:
    /// A null frame.
    StreamFrame() = default;

    /// Copies the pixels of `source`, so that its sender may do with its buffer what it likes.
    /// RGB888 and RGB32 keep their format; every other becomes RGB32, or premultiplied ARGB32 when
    /// it has an alpha channel. A device pixel ratio is dropped: a stream counts in pixels. A null
    /// image, and one that there is no memory for, gives a null frame.
    explicit StreamFrame(const QImage& source);

    bool isNull() const { return buffer == nullptr; }
    /// Size in pixels; (0, 0) when null.
    QSize size() const { return part.size(); }
    /// (0, 0) to the last pixel; a null rectangle when null.
    QRect rect() const { return {QPoint(0, 0), part.size()}; }

    /// The pixels without another copy: a read-only view that keeps them alive. Null when null.
    QImage image() const;

    /// The part of this frame that lies in `area` (pixels of this frame), without copying pixels.
    /// Null when `area` is empty or lies outside.
    StreamFrame cropped(const QRect& area) const;

    /// Same part of the same copy, and therefore same pixels. Unlike the comparison of addresses it
    /// holds for as long as the program runs: a number is never given out twice.
    struct Identity {
        quint64 copy = 0; ///< 0 for the null frame.
        QRect part;
        bool operator==(const Identity&) const = default;
    };
    Identity identity() const { return {number, part}; }

private:
    std::shared_ptr<const QImage> buffer;
    quint64 number = 0;
    QRect part; ///< Shown part, in pixels of the buffer.
};
