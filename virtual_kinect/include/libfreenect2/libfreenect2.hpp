#pragma once

#include <libfreenect2/config.h>
#include <libfreenect2/frame_listener.hpp>
#include <libfreenect2/packet_pipeline.h>

#include <string>

namespace libfreenect2 {

/// An opened device. Its functions are called by one thread at a time.
class LIBFREENECT2_API Freenect2Device {
public:
    static constexpr unsigned int VendorId = 0x045E;
    static constexpr unsigned int ProductId = 0x02D8;
    static constexpr unsigned int ProductIdPreview = 0x02C4;

    /// Colour camera: focal lengths and principal point in pixels, then the factory's polynomial
    /// that maps depth pixels to colour pixels.
    struct ColorCameraParams {
        float fx, fy, cx, cy;
        float shift_d, shift_m;
        float mx_x3y0, mx_x0y3, mx_x2y1, mx_x1y2, mx_x2y0, mx_x0y2, mx_x1y1, mx_x1y0, mx_x0y1,
            mx_x0y0;
        float my_x3y0, my_x0y3, my_x2y1, my_x1y2, my_x2y0, my_x0y2, my_x1y1, my_x1y0, my_x0y1,
            my_x0y0;
    };

    /// Infrared and depth camera: focal lengths and principal point in pixels, radial (k) and
    /// tangential (p) distortion.
    struct IrCameraParams {
        float fx, fy, cx, cy;
        float k1, k2, k3, p1, p2;
    };

    /// Depth processing of a sensor, distances in metres: depth outside of MinDepth to MaxDepth is
    /// no reading. A virtual device's depth is filtered already, so that the filters do nothing.
    struct LIBFREENECT2_API Config {
        float MinDepth;
        float MaxDepth;
        bool EnableBilateralFilter;
        bool EnableEdgeAwareFilter;

        /// 0.5 m, 4.5 m, both filters on.
        Config();
    };

    /// Stops and closes the device if that was not done.
    virtual ~Freenect2Device();

    virtual std::string getSerialNumber() = 0;
    virtual std::string getFirmwareVersion() = 0;

    virtual ColorCameraParams getColorCameraParams() = 0;
    virtual IrCameraParams getIrCameraParams() = 0;
    virtual void setColorCameraParams(const ColorCameraParams& params) = 0;
    virtual void setIrCameraParams(const IrCameraParams& params) = 0;
    virtual void setConfiguration(const Config& config) = 0;

    /// The listeners may be null, must outlive the streaming and take effect at the next start.
    virtual void setColorFrameListener(FrameListener* rgb_frame_listener) = 0;
    virtual void setIrAndDepthFrameListener(FrameListener* ir_frame_listener) = 0;

    /// Starts all streams. False when the device runs already, is closed or will not start.
    virtual bool start() = 0;
    /// Starts the colour stream, the infrared and depth streams, or both.
    virtual bool startStreams(bool rgb, bool depth) = 0;
    /// Ends the streams; no listener is called after it. False when they were not running.
    virtual bool stop() = 0;
    /// Ends the streams and gives the device back. Afterwards it cannot be started again.
    virtual bool close() = 0;
};

class Freenect2Impl;

/// Finds and opens devices. It owns the devices that it opened and deletes those that are left when
/// it ends; deleting one earlier is allowed.
class LIBFREENECT2_API Freenect2 {
public:
    /// `usb_context` is for real sensors and is ignored.
    explicit Freenect2(void* usb_context = nullptr);
    virtual ~Freenect2();
    Freenect2(const Freenect2&) = delete;
    Freenect2& operator=(const Freenect2&) = delete;

    /// Looks which devices are attached and returns how many. To be called before anything else.
    int enumerateDevices();

    /// Serial number of a found device, 0 being the first; empty when there is none.
    std::string getDeviceSerialNumber(int idx);
    std::string getDefaultDeviceSerialNumber();

    /// Open a found device. Null when there is none such or it will not open; the same device again
    /// when it is open already. A pipeline is the library's from the call on, also when opening
    /// fails.
    Freenect2Device* openDevice(int idx);
    Freenect2Device* openDevice(int idx, const PacketPipeline* factory);
    Freenect2Device* openDevice(const std::string& serial);
    Freenect2Device* openDevice(const std::string& serial, const PacketPipeline* factory);
    Freenect2Device* openDefaultDevice();
    Freenect2Device* openDefaultDevice(const PacketPipeline* factory);

private:
    Freenect2Impl* impl_;
};

} // namespace libfreenect2
