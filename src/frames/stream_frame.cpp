#include "frames/stream_frame.h"

#include "frames/picture_pool.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <unordered_map>

namespace {

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

quint64 nextNumber() {
    static std::atomic<quint64> last{0};
    return ++last;
}

} // namespace

/// The pixels that frames share.
struct StreamFrame::Picture {
    explicit Picture(QImage&& written) : pixels(std::move(written)), number(nextNumber()) {}
    ~Picture();

    /// Whether `image` shows all of these pixels.
    bool isShownBy(const QImage& image) const {
        return image.constBits() == pixels.constBits() && image.size() == pixels.size() &&
               image.format() == pixels.format() && image.bytesPerLine() == pixels.bytesPerLine();
    }

    const QImage pixels;
    const quint64 number;

    /// All pictures there are, by the address of their first pixel.
    struct Register {
        std::mutex mutex;
        std::unordered_map<const uchar*, std::weak_ptr<const Picture>> pictures;
    };
    /// Never destroyed: frames in static objects may outlive everything else.
    static Register& all() {
        static auto* const pictures = new Register;
        return *pictures;
    }

    static std::shared_ptr<const Picture> make(QImage&& written) {
        auto made = std::make_shared<const Picture>(std::move(written));
        Register& known = all();
        const std::lock_guard lock(known.mutex);
        known.pictures[made->pixels.constBits()] = made;
        return made;
    }

    /// The picture that `image` shows all of; nothing if it is none of ours. An image that keeps a
    /// picture's pixels alive always finds it; one that was made of their bare address finds it or
    /// not, and can be used either way.
    static std::shared_ptr<const Picture> shownBy(const QImage& image) {
        std::shared_ptr<const Picture> picture; // if it is the last one, it goes after the lock
        {
            Register& known = all();
            const std::lock_guard lock(known.mutex);
            const auto found = known.pictures.find(image.constBits());
            if (found != known.pictures.end())
                picture = found->second.lock();
        }
        return picture && picture->isShownBy(image) ? picture : nullptr;
    }
};

// Before the pixels' memory can be used for another picture.
StreamFrame::Picture::~Picture() {
    Register& known = all();
    const std::lock_guard lock(known.mutex);
    known.pictures.erase(pixels.constBits());
}

StreamFrame::StreamFrame(std::shared_ptr<const Picture> shared) : picture(std::move(shared)) {
    if (picture)
        part = picture->pixels.rect();
}

StreamFrame::StreamFrame(const QImage& source) {
    if (source.isNull())
        return;
    if (std::shared_ptr<const Picture> ours = Picture::shownBy(source)) {
        *this = StreamFrame(std::move(ours));
        return;
    }
    const QImage kept = source.convertToFormat(keptFormat(source));
    QImage copy = PicturePool::shared().take(kept.size(), kept.format());
    if (copy.isNull())
        return;
    copyPixels(kept, copy);
    *this = fromWritten(std::move(copy));
}

StreamFrame StreamFrame::fromWritten(QImage&& picture) {
    if (picture.isNull())
        return {};
    picture.setDevicePixelRatio(1.0);
    return StreamFrame(Picture::make(std::move(picture)));
}

QImage StreamFrame::image() const {
    if (!picture)
        return {};
    const QImage& pixels = picture->pixels;
    const uchar* first =
        pixels.constScanLine(part.top()) + qsizetype(part.left()) * (pixels.depth() / 8);
    using Keep = std::shared_ptr<const Picture>;
    return {first,
            part.width(),
            part.height(),
            pixels.bytesPerLine(),
            pixels.format(),
            [](void* keep) { delete static_cast<Keep*>(keep); },
            new Keep(picture)};
}

StreamFrame StreamFrame::cropped(const QRect& area) const {
    const QRect inside = area.intersected(rect());
    if (inside.isEmpty())
        return {};
    StreamFrame result(*this);
    result.part = inside.translated(part.topLeft());
    return result;
}

StreamFrame::Identity StreamFrame::identity() const {
    return {picture ? picture->number : 0, part};
}
