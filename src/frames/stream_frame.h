#pragma once

#include <QImage>
#include <QRect>

#include <memory>

/// One picture of a stream. It is written once, never changes afterwards, and is shared by value:
/// whoever shows it, searches it or keeps it holds the same pixels, and its memory is used again
/// only when the last of them has let go. Frames may be made, copied and dropped on any thread.
class StreamFrame {
public:
    /// A null frame.
    StreamFrame() = default;

    /// The picture `source` shows. Where `source` is what image() of a whole frame returned, or a
    /// copy of that, the frame shares its pixels: nobody can write them any more. Any other image
    /// may be in a buffer that its sender writes again, so that its pixels are copied.
    ///
    /// RGB888 and RGB32 keep their format; every other becomes RGB32, or premultiplied ARGB32 when
    /// it has an alpha channel. A device pixel ratio is dropped: a stream counts in pixels. A null
    /// image, and one that there is no memory for, gives a null frame.
    explicit StreamFrame(const QImage& source);

    /// A frame of a picture that has just been written, without copying it. Its pixels must be its
    /// own, which they are for PicturePool's and QImage's own memory, and its format be one that a
    /// frame keeps. Nobody else may hold a copy of it. A null picture gives a null frame.
    static StreamFrame fromWritten(QImage&& picture);

    bool isNull() const { return picture == nullptr; }
    /// Size in pixels; (0, 0) when null.
    QSize size() const { return part.size(); }
    /// (0, 0) to the last pixel; a null rectangle when null.
    QRect rect() const { return {QPoint(0, 0), part.size()}; }

    /// The pixels without a copy: a read-only view that keeps them alive. QImage copies the pixels
    /// of such a view before anybody writes to it. Null when null.
    QImage image() const;

    /// The part of this frame that lies in `area` (pixels of this frame), without copying pixels.
    /// Null when `area` is empty or lies outside.
    StreamFrame cropped(const QRect& area) const;

    /// Same part of the same picture, and therefore same pixels. Unlike the comparison of addresses
    /// it holds for as long as the program runs: a number is never given out twice.
    struct Identity {
        quint64 picture = 0; ///< 0 for the null frame.
        QRect part;
        bool operator==(const Identity&) const = default;
    };
    Identity identity() const;

private:
    struct Picture;

    explicit StreamFrame(std::shared_ptr<const Picture> shared);

    std::shared_ptr<const Picture> picture;
    QRect part; ///< Shown part, in pixels of the picture.
};
