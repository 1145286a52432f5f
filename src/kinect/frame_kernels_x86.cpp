#include "kinect/frame_kernels.h"

#include <vector>

namespace baseline {
extern const FrameKernels kernels;
}
namespace sse41 {
extern const FrameKernels kernels;
}
namespace avx2 {
extern const FrameKernels kernels;
}
namespace avx512 {
extern const FrameKernels kernels;
}

std::span<const FrameKernels> supportedFrameKernels() {
    static const std::vector<FrameKernels> supported = [] {
        std::vector<FrameKernels> all;
        if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
            __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
            __builtin_cpu_supports("avx512vbmi"))
            all.push_back(avx512::kernels);
        if (__builtin_cpu_supports("avx2"))
            all.push_back(avx2::kernels);
        if (__builtin_cpu_supports("sse4.1"))
            all.push_back(sse41::kernels);
        all.push_back(baseline::kernels);
        return all;
    }();
    return supported;
}
