#pragma once

#include "app/worker_thread.h"
#include "enroll/frame_look.h"

#include <QImage>
#include <optional>

namespace enroll {

/// Searches the newest frame for faces, on a thread of its own.
///
/// Contract, beside that of WorkerThread:
/// - submit() may be called from any thread and returns at once. Only the newest frame counts: one
///   that was not begun is replaced.
/// - A stop is noticed between the detectors. A frame that fails is left out.
class LookWorker : public WorkerThread {
    Q_OBJECT

public:
    /// `searchBodies`: whether people's upper bodies are searched enlarged too, as the Control
    /// Center does with those that depth shows.
    LookWorker(Detectors detectors, bool searchBodies, QObject* parent = nullptr);
    ~LookWorker() override;

    /// Hands over a colour frame, the depth that goes with it, and its time in milliseconds. A null
    /// frame is ignored. The pixels must not be written any more.
    void submit(const QImage& frame, const DepthFrame& depth, qint64 timeMs);

Q_SIGNALS:
    void looked(const enroll::FrameLook& look);

protected:
    void run() override;

private:
    struct Input {
        QImage frame;
        DepthFrame depth;
        qint64 timeMs = 0;
    };

    std::optional<Input> waitForInput();
    FrameLook lookAt(const Input& input);

    // This thread's only, once it runs.
    Detectors detectors;
    const bool searchBodies;

    // Under the mutex.
    std::optional<Input> pending;
};

} // namespace enroll

Q_DECLARE_METATYPE(enroll::FrameLook)
