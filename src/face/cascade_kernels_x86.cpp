#include "face/cascade_kernels.h"

#include <vector>

namespace cascade_baseline {
extern const CascadeKernels kernels;
}
namespace cascade_avx2 {
extern const CascadeKernels kernels;
}
namespace cascade_avx512 {
extern const CascadeKernels kernels;
}

std::span<const CascadeKernels> supportedCascadeKernels() {
    static const std::vector<CascadeKernels> supported = [] {
        std::vector<CascadeKernels> all;
        if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
            __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq"))
            all.push_back(cascade_avx512::kernels);
        if (__builtin_cpu_supports("avx2"))
            all.push_back(cascade_avx2::kernels);
        all.push_back(cascade_baseline::kernels);
        return all;
    }();
    return supported;
}
