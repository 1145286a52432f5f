#include "face/cascade_kernels.h"

namespace cascade_baseline {
extern const CascadeKernels kernels;
}

std::span<const CascadeKernels> supportedCascadeKernels() {
    return {&cascade_baseline::kernels, 1};
}
