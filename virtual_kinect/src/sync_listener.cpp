#include <libfreenect2/frame_listener_impl.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace libfreenect2 {

class SyncMultiFrameListenerImpl {
public:
    explicit SyncMultiFrameListenerImpl(unsigned int types) : chosen(types) {}

    const unsigned int chosen;
    std::mutex mutex;
    std::condition_variable complete;
    // Under the mutex:
    FrameMap waiting;
    unsigned int arrived = 0;

    bool ready() const { return arrived == chosen; }

    void take(FrameMap& frame) {
        frame.swap(waiting);
        waiting.clear();
        arrived = 0;
    }
};

SyncMultiFrameListener::SyncMultiFrameListener(unsigned int frame_types)
    : impl_(new SyncMultiFrameListenerImpl(frame_types)) {}

SyncMultiFrameListener::~SyncMultiFrameListener() {
    release(impl_->waiting);
    delete impl_;
}

bool SyncMultiFrameListener::hasNewFrame() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->ready();
}

bool SyncMultiFrameListener::waitForNewFrame(FrameMap& frame, int milliseconds) {
    std::unique_lock lock(impl_->mutex);
    if (!impl_->complete.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                  [this] { return impl_->ready(); }))
        return false;
    impl_->take(frame);
    return true;
}

void SyncMultiFrameListener::waitForNewFrame(FrameMap& frame) {
    std::unique_lock lock(impl_->mutex);
    impl_->complete.wait(lock, [this] { return impl_->ready(); });
    impl_->take(frame);
}

void SyncMultiFrameListener::release(FrameMap& frame) {
    for (const auto& [type, owned] : frame)
        delete owned;
    frame.clear();
}

bool SyncMultiFrameListener::onNewFrame(Frame::Type type, Frame* frame) {
    Frame* replaced = nullptr;
    {
        const std::lock_guard lock(impl_->mutex);
        if ((impl_->chosen & type) == 0)
            return false;
        Frame*& place = impl_->waiting[type];
        replaced = place;
        place = frame;
        impl_->arrived |= type;
        if (impl_->ready())
            impl_->complete.notify_one();
    }
    delete replaced;
    return true;
}

} // namespace libfreenect2
