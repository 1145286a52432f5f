#include "delivery_thread.h"

#include <pthread.h>

namespace virtual_kinect {

DeliveryThread::DeliveryThread(const char* name, libfreenect2::FrameListener& listener)
    : to(listener), thread([this, name] {
          pthread_setname_np(pthread_self(), name);
          deliverUntilStopped();
      }) {}

DeliveryThread::~DeliveryThread() {
    {
        const std::lock_guard lock(mutex);
        stopRequested = true;
    }
    changed.notify_one();
    thread.join();
}

void DeliveryThread::offer(Delivery delivery) {
    {
        const std::lock_guard lock(mutex);
        if (delivering)
            return;
        waiting.swap(delivery);
    }
    changed.notify_one();
}

void DeliveryThread::deliverUntilStopped() {
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return stopRequested || !waiting.empty(); });
        if (stopRequested)
            return;
        Delivery taken;
        taken.swap(waiting);
        delivering = true;
        lock.unlock();
        for (auto& [type, frame] : taken) {
            if (to.onNewFrame(type, frame.get()))
                static_cast<void>(frame.release()); // it is the listener's now
        }
        lock.lock();
        delivering = false;
    }
}

} // namespace virtual_kinect
