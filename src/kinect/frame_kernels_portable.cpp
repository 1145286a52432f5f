#include "kinect/frame_kernels.h"

namespace baseline {
extern const FrameKernels kernels;
}

std::span<const FrameKernels> supportedFrameKernels() {
    return {&baseline::kernels, 1};
}
