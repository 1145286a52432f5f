#include "ui/stream_frame.h"

#include <QMutex>
#include <QMutexLocker>
#include <algorithm>
#include <atomic>
#include <cstring>
#include <vector>

namespace {

/// Buffers that no frame holds any more. A video makes a frame of the same size thirty times a
/// second, and the first writing to fresh pages costs more than the copy itself.
class BufferPool {
public:
    QImage take(QSize size, QImage::Format format) {
        const QMutexLocker lock(&mutex);
        const auto fits = [&](const QImage& spare) {
            return spare.size() == size && spare.format() == format;
        };
        const auto found = std::find_if(spares.begin(), spares.end(), fits);
        if (found == spares.end())
            return {};
        QImage buffer = std::move(*found);
        spares.erase(found);
        return buffer;
    }

    void giveBack(QImage buffer) {
        QImage dropped; // freed after the lock
        const QMutexLocker lock(&mutex);
        if (spares.size() == maximum) {
            dropped = std::move(spares.front());
            spares.erase(spares.begin());
        }
        spares.push_back(std::move(buffer));
    }

private:
    // One for each of the three streams and one of a size that is going out of use.
    static constexpr std::size_t maximum = 4;

    QMutex mutex;
    std::vector<QImage> spares; ///< Oldest first.
};

/// Outlives every frame, also those in static objects.
const std::shared_ptr<BufferPool>& bufferPool() {
    static const auto pool = std::make_shared<BufferPool>();
    return pool;
}

QImage::Format keptFormat(const QImage& source) {
    if (source.format() == QImage::Format_RGB888)
        return QImage::Format_RGB888;
    return source.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
}

/// Both have the same size and format. In one go where rows lie alike; what pads the last row may
/// not be the sender's to read.
void copyPixels(const QImage& source, QImage& target) {
    const auto rowBytes = qsizetype(source.width()) * (source.depth() / 8);
    if (source.bytesPerLine() == target.bytesPerLine()) {
        const qsizetype rowsButTheLast = source.bytesPerLine() * (source.height() - 1);
        std::memcpy(target.bits(), source.constBits(),
                    static_cast<std::size_t>(rowsButTheLast + rowBytes));
        return;
    }
    for (int y = 0; y < source.height(); ++y)
        std::memcpy(target.scanLine(y), source.constScanLine(y),
                    static_cast<std::size_t>(rowBytes));
}

std::shared_ptr<const QImage> recycled(QImage&& buffer) {
    const auto giveBack = [pool = bufferPool()](QImage* unused) {
        pool->giveBack(std::move(*unused));
        delete unused;
    };
    return {new QImage(std::move(buffer)), giveBack};
}

quint64 nextNumber() {
    static std::atomic<quint64> last{0};
    return ++last;
}

} // namespace

StreamFrame::StreamFrame(const QImage& source) {
    if (source.isNull())
        return;
    const QImage::Format format = keptFormat(source);
    const QImage kept = source.convertToFormat(format);
    QImage target = bufferPool()->take(kept.size(), format);
    if (target.isNull())
        target = QImage(kept.size(), format);
    if (kept.isNull() || target.isNull())
        return;
    copyPixels(kept, target);
    part = target.rect();
    number = nextNumber();
    buffer = recycled(std::move(target));
}

QImage StreamFrame::image() const {
    if (!buffer)
        return {};
    const uchar* first =
        buffer->constScanLine(part.top()) + qsizetype(part.left()) * (buffer->depth() / 8);
    using Keep = std::shared_ptr<const QImage>;
    return {first,
            part.width(),
            part.height(),
            buffer->bytesPerLine(),
            buffer->format(),
            [](void* keep) { delete static_cast<Keep*>(keep); },
            new Keep(buffer)};
}

StreamFrame StreamFrame::cropped(const QRect& area) const {
    const QRect inside = area.intersected(rect());
    if (inside.isEmpty())
        return {};
    StreamFrame result(*this);
    result.part = inside.translated(part.topLeft());
    return result;
}
