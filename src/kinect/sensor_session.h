#pragma once

#include <libfreenect2/frame_listener_impl.h>
#include <libfreenect2/libfreenect2.hpp>

#include <QString>

#include <chrono>
#include <optional>

/// Which step of the way to running streams failed.
struct SensorFailure {
    enum class Step {
        Enumerate, ///< No sensor was found.
        Open,      ///< The first sensor could not be opened.
        Start      ///< Its streams could not be started.
    };
    Step step = Step::Enumerate;
    QString exception; ///< What the library threw; empty where it only reported the failure.
};

/// One use of the first sensor, from looking for it to giving it back: the library's context, the
/// device and the listener that joins colour, infrared and depth frames into sets.
///
/// Used by one thread, in this order; the destructor ends whatever is left:
///
///     SensorSession session;
///     if (const auto failure = session.start()) { report it; session.close(); return; }
///     while (…) {
///         if (!session.wait(1s)) continue;   // silence
///         use session.frames();
///         session.release();
///     }
///     session.close();
class SensorSession {
public:
    SensorSession() = default;
    /// Ends the session as close() does. Exceptions of the library stay inside.
    ~SensorSession();
    SensorSession(const SensorSession&) = delete;
    SensorSession& operator=(const SensorSession&) = delete;

    /// Finds the first sensor, opens it with the default pipeline and starts all its streams, or
    /// only infrared and depth, whose sets come 30 times a second in the dark, too; once in a
    /// session. Nothing when they run, else the step that failed. No exception leaves it.
    /// After a failure the device may be open still, until close() or the destructor: closing can
    /// take seconds, so that the failure should be reported first.
    std::optional<SensorFailure> start(bool withColor = true);

    /// Waits for the next frame set, which is held until release(); false when none came in time.
    bool wait(std::chrono::milliseconds timeout);

    /// The frames of the set that is held, by their type; frames may be missing or unusable.
    const libfreenect2::FrameMap& frames() const { return held; }

    /// Gives the frames of the set back to the library.
    void release();

    /// Moves the set that is held to the caller. Its frames are the caller's to delete, on any
    /// thread, before close().
    libfreenect2::FrameMap take();

    /// Stops the streams where they were started, and closes the device. Further calls do nothing.
    /// An exception of the library passes through, when everything else was done.
    void close();

    /// The open device, for its serial number, firmware version and camera parameters. Only after a
    /// successful start().
    libfreenect2::Freenect2Device& device() { return *opened; }

private:
    bool enumerate();
    bool open();
    bool startStreams();

    // In this order: the listener goes before the context, which owns the device.
    std::optional<libfreenect2::Freenect2> context;
    std::optional<libfreenect2::SyncMultiFrameListener> listener;
    libfreenect2::FrameMap held;
    libfreenect2::Freenect2Device* opened = nullptr; ///< The context's; null when closed.
    bool colorWanted = true;
    bool streaming = false;
};
