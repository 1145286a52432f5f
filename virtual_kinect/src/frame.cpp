#include <libfreenect2/frame_listener.hpp>
#include <libfreenect2/packet_pipeline.h>

#include <new>

namespace libfreenect2 {

namespace {
constexpr std::align_val_t frameAlignment{16};
}

Frame::Frame(std::size_t frameWidth, std::size_t frameHeight, std::size_t bytesPerPixel,
             unsigned char* memory)
    : width(frameWidth), height(frameHeight), bytes_per_pixel(bytesPerPixel), data(memory),
      timestamp(0), sequence(0), exposure(0), gain(0), gamma(0), status(0), format(Invalid),
      rawdata(nullptr) {
    if (memory != nullptr)
        return;
    rawdata = static_cast<unsigned char*>(
        ::operator new(frameWidth* frameHeight* bytesPerPixel, frameAlignment));
    data = rawdata;
}

Frame::~Frame() {
    ::operator delete(rawdata, frameAlignment);
}

FrameListener::~FrameListener() = default;

PacketPipeline::PacketPipeline() = default;
PacketPipeline::~PacketPipeline() = default;
CpuPacketPipeline::CpuPacketPipeline() = default;
CpuPacketPipeline::~CpuPacketPipeline() = default;

} // namespace libfreenect2
