#pragma once

#include <libfreenect2/config.h>

namespace libfreenect2 {

/// How a sensor's packets would be decoded. A virtual device delivers finished frames, so that a
/// pipeline is taken over and freed but has no effect.
class LIBFREENECT2_API PacketPipeline {
public:
    PacketPipeline();
    virtual ~PacketPipeline();
};

class LIBFREENECT2_API CpuPacketPipeline : public PacketPipeline {
public:
    CpuPacketPipeline();
    ~CpuPacketPipeline() override;
};

} // namespace libfreenect2
