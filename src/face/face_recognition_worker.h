#pragma once

#include "app/face_overlay.h"
#include "app/rate_limit.h"
#include "app/worker_thread.h"
#include "face/face_options.h"
#include "face/face_pass.h"
#include "face/pass_rest.h"
#include "frames/stream_frame.h"

#include <QImage>
#include <QList>
#include <QRect>
#include <optional>

/// Finds faces in the newest color frame and tells the owner from strangers, on a thread of its
/// own.
///
/// Contract, beside that of WorkerThread:
/// - start() runs the thread once. It reads the owner's samples, trains and writes the model, loads
///   the cascades, and then works on frames until it is stopped; a failed start step ends it after
///   one status text.
/// - submitFrame() and setBodyRegions() may be called from any thread at any time, also before
///   start() and after the end. They return at once.
/// - Only the newest frame counts: one that was not taken yet is replaced by the next.
/// - A stop is noticed between the pieces of the start steps and within a search; a frame still
///   waiting is not worked on.
/// - The thread runs at a low priority. OpenCV is set to work in its callers' threads when a
///   worker is made, so that it starts none for it.
/// - When nothing is new it rests between two passes; see PassRest.
class FaceRecognitionWorker : public WorkerThread {
    Q_OBJECT

public:
    /// `lostTimeoutMs`: how long a face that was shown is remembered unseen, 0 or more.
    explicit FaceRecognitionWorker(int lostTimeoutMs, QObject* parent = nullptr,
                                   face::Options settings = {});
    ~FaceRecognitionWorker() override;

    /// Hands over a frame of any size and format; its pixels are copied. A null image is ignored.
    void submitFrame(const QImage& image);
    /// Hands over a picture that nobody writes any more, without copying it. A null one is ignored.
    void submitFrame(const StreamFrame& frame);
    /// Hands over where depth saw bodies, in pixels of the frames.
    void setBodyRegions(const QList<QRect>& regions);

Q_SIGNALS:
    /// What is to be shown, once for every frame that was worked on.
    void overlaysReady(const QList<FaceOverlay>& overlays);
    void statusChanged(const QString& status);

protected:
    void run() override;

private:
    struct HandedOver {
        StreamFrame frame;
        QList<QRect> bodyRegions;
    };

    void work();
    std::optional<int> learnOwner(FaceTools& tools);
    bool loadCascades(FaceTools& tools);
    void searchLargestFrame(FaceTools& tools);
    void watch(FaceTools& tools);
    std::optional<HandedOver> waitForFrame();
    void workOnFrame(const HandedOver& input, FaceTools& tools);
    void rest(qint64 restMs, qsizetype bodies);
    void logOverlays(const QList<FaceOverlay>& overlays, qint64 nowMs);

    // Constant.
    const int lostTimeoutMs;

    // Guarded by stopMutex; wakeUp says that a frame came.
    StreamFrame pendingFrame;
    QList<QRect> bodyRegions;
    bool hasFrame = false;

    // Touched by this thread only once it runs.
    face::Options options;
    FaceTracks tracks;
    RateLimit logLimit;
    RateLimit skipLimit;
    PassRest passRest;
};
