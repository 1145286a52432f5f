#pragma once

#include <libfreenect2/frame_listener.hpp>

#include <map>

namespace libfreenect2 {

using FrameMap = std::map<Frame::Type, Frame*>;

class SyncMultiFrameListenerImpl;

/// Collects one frame of each of several streams. A set is ready as soon as every chosen stream has
/// delivered; until it is taken, newer frames replace older ones of the same stream.
class LIBFREENECT2_API SyncMultiFrameListener : public FrameListener {
public:
    /// `frame_types`: the chosen streams, Frame::Type values combined with bitwise or. Frames of
    /// other streams are not kept.
    explicit SyncMultiFrameListener(unsigned int frame_types);
    /// Deletes the frames not taken. Nobody may be waiting.
    ~SyncMultiFrameListener() override;
    SyncMultiFrameListener(const SyncMultiFrameListener&) = delete;
    SyncMultiFrameListener& operator=(const SyncMultiFrameListener&) = delete;

    /// Whether a set is ready to be taken.
    bool hasNewFrame() const;

    /// Waits at most `milliseconds` for a set and moves it to `frame`, whose frames are the
    /// caller's from then on. Returns false and leaves `frame` alone when none came in time.
    bool waitForNewFrame(FrameMap& frame, int milliseconds);

    /// The same without a bound.
    void waitForNewFrame(FrameMap& frame);

    /// Deletes the frames of `frame` and empties it.
    void release(FrameMap& frame);

    bool onNewFrame(Frame::Type type, Frame* frame) override;

private:
    SyncMultiFrameListenerImpl* impl_;
};

} // namespace libfreenect2
