#include "app/memory_policy.h"

#include <malloc.h>

void giveLargeBlocksBack() {
    mallopt(M_MMAP_THRESHOLD, largeBlock);
}
