#include "kinect/image_pool.h"

#include <cstddef>
#include <limits>
#include <mutex>
#include <new>
#include <vector>

struct ImagePool::Shelf {
    /// A buffer, and while an image uses it also what it needs to come back.
    struct Buffer {
        std::unique_ptr<uchar[]> bytes;
        qsizetype size = 0;
        std::shared_ptr<Shelf> owner;
    };

    explicit Shelf(int limit) : idleLimit(static_cast<std::size_t>(qMax(limit, 0))) {
        idle.reserve(idleLimit); // so that putting a buffer back never throws
    }

    /// A buffer of that many bytes, idle or new; null if there is no memory for it.
    std::unique_ptr<Buffer> take(qsizetype size) {
        const std::lock_guard lock(mutex);
        std::erase_if(idle, [size](const auto& buffer) { return buffer->size != size; });
        std::unique_ptr<Buffer> buffer;
        if (idle.empty()) {
            buffer = std::make_unique<Buffer>();
            buffer->size = size;
            buffer->bytes.reset(new (std::nothrow) uchar[static_cast<std::size_t>(size)]);
            if (!buffer->bytes)
                return nullptr;
        } else {
            buffer = std::move(idle.back());
            idle.pop_back();
        }
        ++lent;
        return buffer;
    }

    void putBack(std::unique_ptr<Buffer> buffer) {
        const std::shared_ptr<Shelf> self = std::move(buffer->owner); // no buffer keeps its shelf
        const std::lock_guard lock(mutex);
        --lent;
        if (idle.size() < idleLimit)
            idle.push_back(std::move(buffer));
    }

    /// QImageCleanupFunction: the last image that used the buffer is gone.
    static void giveBack(void* info) {
        std::unique_ptr<Buffer> buffer(static_cast<Buffer*>(info));
        Shelf& owner = *buffer->owner;
        owner.putBack(std::move(buffer));
    }

    const std::size_t idleLimit;
    std::mutex mutex;
    // Under the mutex:
    std::vector<std::unique_ptr<Buffer>> idle;
    int lent = 0;
};

ImagePool::ImagePool(int idleLimit) : shelf(std::make_shared<Shelf>(idleLimit)) {}

ImagePool::~ImagePool() = default;

QImage ImagePool::take(int width, int height) {
    if (width < 1 || height < 1 || width > std::numeric_limits<int>::max() / 3 - 3)
        return {};
    const qsizetype bytesPerLine = (qsizetype{width} * 3 + 3) / 4 * 4;
    const qsizetype size = bytesPerLine * height;
    std::unique_ptr<Shelf::Buffer> buffer = shelf->take(size);
    if (!buffer)
        return {};
    buffer->owner = shelf;
    uchar* const bytes = buffer->bytes.get();
    QImage image(bytes, width, height, bytesPerLine, QImage::Format_RGB888, Shelf::giveBack,
                 buffer.get());
    if (image.isNull())
        shelf->putBack(std::move(buffer));
    else
        buffer.release(); // the image gives it back
    return image;
}

int ImagePool::inUse() const {
    const std::lock_guard lock(shelf->mutex);
    return shelf->lent;
}
