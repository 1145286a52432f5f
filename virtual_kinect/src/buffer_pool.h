#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

namespace virtual_kinect {

/// Keeps the memory of frames that were deleted for the next frames: fresh memory for a colour
/// picture costs thousands of page faults each time. Callable from any thread; the frames keep it
/// alive.
class BufferPool {
public:
    using Bytes = std::vector<std::uint8_t>;
    using Floats = std::vector<float>;

    /// A spare buffer with whatever it held, or an empty one.
    template <typename Buffer>
    Buffer take() {
        const std::lock_guard lock(mutex);
        auto& buffers = spares<Buffer>();
        if (buffers.empty())
            return {};
        Buffer buffer = std::move(buffers.back());
        buffers.pop_back();
        return buffer;
    }

    template <typename Buffer>
    void giveBack(Buffer buffer) {
        const std::lock_guard lock(mutex);
        auto& buffers = spares<Buffer>();
        if (buffers.size() < mostSpares && !buffer.empty())
            buffers.push_back(std::move(buffer));
    }

private:
    /// One set being rendered, one complete, one being replaced, and one to spare; infrared and
    /// depth share the floats.
    static constexpr std::size_t mostSpares = 8;

    template <typename Buffer>
    std::vector<Buffer>& spares() {
        if constexpr (std::is_same_v<Buffer, Bytes>)
            return bytes;
        else
            return floats;
    }

    std::mutex mutex;
    std::vector<Bytes> bytes;
    std::vector<Floats> floats;
};

} // namespace virtual_kinect
