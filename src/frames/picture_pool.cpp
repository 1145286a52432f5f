#include "frames/picture_pool.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <mutex>
#include <new>
#include <vector>

namespace {

/// As QImage has it, so that pictures can be drawn and copied row by row.
constexpr qsizetype rowAlignment = 4;

/// 0 for the formats that nobody here has pictures of.
int bytesPerPixel(QImage::Format format) {
    switch (format) {
    case QImage::Format_RGB888:
        return 3;
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32_Premultiplied:
        return 4;
    default:
        return 0;
    }
}

/// Whether nobody but the pool holds the list any more, on any thread.
bool isReleased(const QList<float>& list) {
    if (!list.isDetached())
        return false;
    // isDetached() only looks at the count. Counting this copy up and down also orders whatever the
    // last other holder did with the list before what is done with it next.
    [[maybe_unused]] const QList<float> counted = list;
    return true;
}

} // namespace

struct PicturePool::State {
    struct Block {
        std::unique_ptr<uchar[]> bytes;
        qsizetype size = 0;
        quint64 returnedAt = 0; ///< As `takes` was then.
    };

    /// What a picture needs to give its memory back. It keeps the state alive.
    struct Loan {
        Block block;
        std::shared_ptr<State> state;
    };

    State() { idle.reserve(maxIdle + 1); } // so that giving a block back never throws

    /// A block of exactly that many bytes, idle or new; without bytes if there is no memory.
    Block take(qsizetype size) {
        std::vector<Block> outdated; // freed after the lock
        const std::lock_guard lock(mutex);
        ++takes;
        while (!idle.empty() && takes - idle.front().returnedAt > maxTakesUnused) {
            outdated.push_back(std::move(idle.front()));
            idle.erase(idle.begin());
        }
        // The one that was returned last is the likeliest to be in the processor's cache.
        for (auto block = idle.rbegin(); block != idle.rend(); ++block) {
            if (block->size == size) {
                Block found = std::move(*block);
                idle.erase(std::next(block).base());
                return found;
            }
        }
        return {std::unique_ptr<uchar[]>(new (std::nothrow) uchar[static_cast<std::size_t>(size)]),
                size};
    }

    void giveBack(Block block) {
        Block surplus; // freed after the lock
        const std::lock_guard lock(mutex);
        block.returnedAt = takes;
        idle.push_back(std::move(block));
        if (idle.size() > maxIdle) {
            surplus = std::move(idle.front());
            idle.erase(idle.begin());
        }
    }

    /// A list of that length that nobody else holds; empty if there is none.
    QList<float> takeList(qsizetype count) {
        const std::lock_guard lock(mutex);
        const auto list = std::find_if(lists.begin(), lists.end(), [count](const auto& candidate) {
            return candidate.size() == count && isReleased(candidate);
        });
        QList<float> found;
        if (list != lists.end()) {
            found = std::move(*list);
            lists.erase(list);
        }
        return found;
    }

    void keepList(const QList<float>& list) {
        QList<float> oldest; // let go after the lock
        const std::lock_guard lock(mutex);
        lists.push_back(list);
        if (lists.size() > maxLists) {
            oldest = std::move(lists.front());
            lists.erase(lists.begin());
        }
    }

    /// QImageCleanupFunction: the last copy of a picture is gone.
    static void endLoan(void* info) {
        const std::unique_ptr<Loan> loan(static_cast<Loan*>(info));
        loan->state->giveBack(std::move(loan->block));
    }

    std::mutex mutex;
    // Under the mutex:
    std::vector<Block> idle; ///< In the order of their return.
    quint64 takes = 0;
    std::vector<QList<float>> lists; ///< The newest that were made, oldest first.
};

PicturePool::PicturePool() : state(std::make_shared<State>()) {}

PicturePool::~PicturePool() = default;

PicturePool& PicturePool::shared() {
    static auto* const pool = new PicturePool;
    return *pool;
}

QImage PicturePool::take(const QSize& size, QImage::Format format) {
    const qsizetype rowBytes = qsizetype{size.width()} * bytesPerPixel(format);
    const qsizetype bytesPerLine = (rowBytes + rowAlignment - 1) / rowAlignment * rowAlignment;
    if (size.isEmpty() || bytesPerLine < 1 || bytesPerLine > std::numeric_limits<int>::max())
        return {};
    State::Block block = state->take(bytesPerLine * size.height());
    if (!block.bytes)
        return {};
    uchar* const bytes = block.bytes.get();
    auto loan = std::make_unique<State::Loan>(State::Loan{std::move(block), state});
    QImage picture(bytes, size.width(), size.height(), bytesPerLine, format, State::endLoan,
                   loan.get());
    if (!picture.isNull())
        static_cast<void>(loan.release()); // the picture ends it
    return picture;
}

QList<float> PicturePool::listOf(const void* source, qsizetype count) {
    QList<float> list = state->takeList(count);
    if (list.isEmpty())
        list.resize(count);
    std::memcpy(list.data(), source, static_cast<std::size_t>(count) * sizeof(float));
    state->keepList(list);
    return list;
}

int PicturePool::idle() const {
    const std::lock_guard lock(state->mutex);
    return static_cast<int>(state->idle.size());
}
