#include "app/memory_policy.h"

#include <malloc.h>

#include <array>
#include <cstdlib>
#include <mutex>
#include <new>

namespace {

/// Freed large blocks. Neither construction nor destruction runs any code, since memory is
/// allocated before and freed after everything else.
struct KeptBlocks {
    struct Block {
        void* memory;
        std::size_t size;
    };

    /// A block of at least `size` bytes and at most an eighth more; null when none is kept.
    void* take(std::size_t size) {
        const std::lock_guard lock(mutex);
        for (std::size_t i = 0; i < count; ++i)
            if (blocks[i].size >= size && blocks[i].size - size <= size / 8) {
                void* const memory = blocks[i].memory;
                blocks[i] = blocks[--count];
                return memory;
            }
        return nullptr;
    }

    /// Returns false when the block is too large or enough are kept.
    bool keep(void* memory, std::size_t size) {
        if (size > maxKeptBlock)
            return false;
        const std::lock_guard lock(mutex);
        if (count == blocks.size())
            return false;
        blocks[count++] = {memory, size};
        return true;
    }

    std::mutex mutex;
    std::array<Block, maxKeptBlocks> blocks{};
    std::size_t count = 0;
};

constinit KeptBlocks kept;

} // namespace

void giveLargeBlocksBack() {
    mallopt(M_MMAP_THRESHOLD, int{largeBlock});
    mallopt(M_TRIM_THRESHOLD, int{keptAtHeapEnd});
}

// The other forms of new and delete, but for over-aligned types, end in these.

void* operator new(std::size_t size) {
    if (size >= minKeptBlock)
        if (void* const memory = kept.take(size))
            return memory;
    for (;;) {
        if (void* const memory = std::malloc(size > 0 ? size : 1))
            return memory;
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr)
            throw std::bad_alloc();
        handler();
    }
}

void operator delete(void* memory) noexcept {
    const std::size_t size = malloc_usable_size(memory); // 0 for null
    if (size < minKeptBlock || !kept.keep(memory, size))
        std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}
