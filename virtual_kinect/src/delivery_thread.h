#pragma once

#include <libfreenect2/frame_listener.hpp>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace virtual_kinect {

/// Frames that belong together, in the order in which the listener gets them.
using Delivery =
    std::vector<std::pair<libfreenect2::Frame::Type, std::unique_ptr<libfreenect2::Frame>>>;

/// A thread that hands frames to a listener, as the thread of a packet processor does: colour has
/// one, infrared and depth share another, so that a listener is called by both at the same time.
///
/// It holds one delivery. While the listener is being called, further ones are dropped.
class DeliveryThread {
public:
    /// `name` is the thread's name for whoever looks at the process, at most 15 characters.
    DeliveryThread(const char* name, libfreenect2::FrameListener& listener);
    /// Waits for a call of the listener that is under way; afterwards the listener is not called.
    ~DeliveryThread();
    DeliveryThread(const DeliveryThread&) = delete;
    DeliveryThread& operator=(const DeliveryThread&) = delete;

    /// Does not wait. Replaces a delivery that the thread has not taken yet.
    void offer(Delivery delivery);

private:
    void deliverUntilStopped();

    libfreenect2::FrameListener& to;

    // Under the mutex:
    std::mutex mutex;
    std::condition_variable changed;
    Delivery waiting;
    bool delivering = false;
    bool stopRequested = false;

    std::thread thread; // last, so that it starts when all else is there
};

} // namespace virtual_kinect
