#pragma once

#include <QImage>
#include <QList>
#include <QSize>

#include <cstddef>
#include <memory>

/// Memory for pictures that is used again. A video makes pictures of the same few sizes thirty
/// times a second, and the first writing to fresh memory costs more than converting a frame into
/// it.
///
/// A picture's memory returns to its pool when the last copy of the picture is gone, on whichever
/// thread that happens, also after the pool itself is gone. Every member may be called on any
/// thread.
///
/// A pool keeps little memory that nobody uses: at most `maxIdle` blocks, and none for longer than
/// `maxTakesUnused` further pictures, so that sizes that went out of use are soon forgotten.
class PicturePool {
public:
    /// One picture of each stream, one of each of Combo's tiles, and two more for a receiver that
    /// falls behind now and then.
    static constexpr int maxIdle = 8;
    /// The program takes about 200 pictures a second.
    static constexpr int maxTakesUnused = 200;

    PicturePool();
    ~PicturePool();
    PicturePool(const PicturePool&) = delete;
    PicturePool& operator=(const PicturePool&) = delete;

    /// The pool that the whole program shares. It is never destroyed: pictures in static objects
    /// may outlive everything else.
    static PicturePool& shared();

    /// A picture of that size in pixels and of the format RGB888, RGB32 or premultiplied ARGB32;
    /// its content is undefined. Null for other formats, if a side is less than 1, if QImage cannot
    /// hold that size, or if there is no memory for it.
    QImage take(const QSize& size, QImage::Format format);

    /// A list of `count` floats, copied from `source`, which needs no alignment. Unlike a picture a
    /// list cannot tell its pool when nobody holds it any more: the pool keeps the newest
    /// `maxLists` that it made, and uses again one of that length that nobody else holds.
    QList<float> listOf(const void* source, qsizetype count);
    static constexpr std::size_t maxLists = 4;

    /// How many blocks of memory wait to be used again.
    int idle() const;

private:
    struct State;
    std::shared_ptr<State> state;
};
