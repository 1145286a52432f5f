#pragma once

/// Blocks of this size and more go back to the system the moment they are freed. In bytes.
inline constexpr int largeBlock = 1 << 20;

/// Tells the C library's allocator about largeBlock; to be called before the first thread starts.
///
/// Left alone, the allocator takes every freed block of up to 32 MiB as a sign to keep such blocks
/// in its heaps from then on. The face search and the tiles allocate pictures of many sizes on many
/// threads, which tears holes into those heaps: the program grew by about 30 MiB now and then,
/// within hours on a busy machine to a third more than it needs. Pictures that are made for every
/// frame come from pools, so few large blocks are allocated at all.
void giveLargeBlocksBack();
