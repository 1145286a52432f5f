#include "doctor/sensor_build.h"

#include <libfreenect2/config.h>
#include <libfreenect2/logger.h>
#include <libfreenect2/packet_pipeline.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace doctor {

namespace {

/// A pipeline without a device says so in the log and nowhere else.
class ErrorCounter : public libfreenect2::Logger {
public:
    explicit ErrorCounter(int& counter) : errors(counter) { level_ = Error; }
    void log(Level level, const std::string&) override { errors += level == Error; }

private:
    int& errors;
};

std::unique_ptr<libfreenect2::PacketPipeline> makePipeline(const QString& name) {
#ifdef LIBFREENECT2_WITH_OPENGL_SUPPORT
    if (name == u"gl"_s)
        return std::make_unique<libfreenect2::OpenGLPacketPipeline>();
#endif
#ifdef LIBFREENECT2_WITH_CUDA_SUPPORT
    if (name == u"cuda"_s)
        return std::make_unique<libfreenect2::CudaPacketPipeline>();
#endif
#ifdef LIBFREENECT2_WITH_OPENCL_SUPPORT
    if (name == u"cl"_s)
        return std::make_unique<libfreenect2::OpenCLPacketPipeline>();
#endif
    if (name == u"cpu"_s)
        return std::make_unique<libfreenect2::CpuPacketPipeline>();
    return nullptr;
}

} // namespace

SensorBuild sensorBuild() {
    SensorBuild build;
    build.isRealLibrary = QLatin1StringView(LUMENO_SENSOR) == "libfreenect2"_L1;
    build.version = QString::fromUtf8(LIBFREENECT2_VERSION);
#ifdef LIBFREENECT2_THREADING_STDLIB
    build.timedWaitsEnd = true;
#endif
    // In the order in which the library prefers them.
#ifdef LIBFREENECT2_WITH_OPENGL_SUPPORT
    build.pipelines.append(u"gl"_s);
#endif
#ifdef LIBFREENECT2_WITH_CUDA_SUPPORT
    build.pipelines.append(u"cuda"_s);
#endif
#ifdef LIBFREENECT2_WITH_OPENCL_SUPPORT
    build.pipelines.append(u"cl"_s);
#endif
    build.pipelines.append(u"cpu"_s);
    return build;
}

int tryPipeline(const QString& name) {
    int errors = 0;
    libfreenect2::setGlobalLogger(new ErrorCounter(errors));
    const bool made = makePipeline(name) != nullptr;
    libfreenect2::setGlobalLogger(nullptr);
    return made && errors == 0 ? 0 : 1;
}

} // namespace doctor
