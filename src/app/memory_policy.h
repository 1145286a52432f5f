#pragma once

#include <cstddef>

/// What malloc gave in blocks of this size and more goes back to the system. In bytes.
inline constexpr std::size_t largeBlock = std::size_t{1} << 20;

/// How much free memory may stay at the end of a heap. The body pass takes and frees some 2 MB of
/// small matrices for every frame; with the 128 KiB that are usual each of them would come from the
/// system anew, page by page. In bytes.
inline constexpr std::size_t keptAtHeapEnd = 4 * largeBlock;

/// What `new` gave in blocks of these sizes is kept when it is freed, and no more than so many
/// blocks. The smallest are the sensor library's infrared and depth frames with 868 kB, the largest
/// its color frames with 8.3 MB.
inline constexpr std::size_t minKeptBlock = largeBlock / 2;
inline constexpr std::size_t maxKeptBlock = 16 * largeBlock;
inline constexpr std::size_t maxKeptBlocks = 12;

// How a program that is linked with this library gets and gives back large blocks:
//
// 1. What comes from malloc (Qt's pictures, OpenCV's matrices) goes back to the system once it
//    is freed, provided that giveLargeBlocksBack() was called.
//
//    Left alone, the allocator takes every freed block of up to 32 MiB as a sign to keep such
//    blocks in its heaps from then on. The face search and the tiles allocate pictures of many
//    sizes on many threads, which tears holes into those heaps: the program grew by about 30 MiB
//    now and then, within hours on a busy machine to a third more than it needs.
//
// 2. What comes from `new` is kept within those bounds and given out again for a block of about the
//    same size. That is always so in a program that is linked with this library.
//
//    libfreenect2 gets its memory by `new`, and anew for each frame: 8.3 MB for a colour picture,
//    and on the processor 18 MB of work space and 0.9 MB each for infrared and depth. By the first
//    rule alone each of these came from the system page by page, some 1,500 to 2,000 page faults a
//    frame. The blocks have the same few sizes for ever, so that keeping them needs neither holes
//    nor more memory than the library uses at a time.

/// Puts the first rule into force; to be called before the first thread starts.
void giveLargeBlocksBack();
