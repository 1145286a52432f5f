#pragma once

#include "awareness/awareness_pass.h"
#include "awareness/follow_texts.h"
#include "face/face_pass.h"
#include "face/room_owner.h"
#include "frame_source.h"
#include "room_optics.h"
#include "room_story.h"

#include <QDir>
#include <QImage>
#include <QStringList>

#include <memory>

/// The built-in room's story seen by the face pass and the awareness pass, in the story's own time,
/// so that the result does not depend on the machine's pace.
namespace room_story_player {

using namespace Qt::StringLiterals;
using namespace virtual_kinect::room;

inline constexpr qint64 start = 1'700'000'000'000;
inline constexpr int lostMs = 5000;
/// Every second frame is enough for the story and halves the time that the test takes.
inline constexpr int frameStep = 2;
/// A face pass takes about 0.6 s of a busy machine; the newest frame is worked on next.
inline constexpr int framesPerFacePass = 18;

struct Moment {
    double seconds;
    FollowView view;
    FollowPass pass;
    QString status; ///< Of the follow target, without what the zoom does.
    QStringList labels;
};

/// The story so far, frame by frame.
class Story {
public:
    /// Of the room, or of a source that shows the same.
    explicit Story(
        std::unique_ptr<virtual_kinect::FrameSource> shown = virtual_kinect::makeRoomSource())
        : source(std::move(shown)) {
        input.imageSize = QSize(colorWidth, colorHeight);
        input.depth.width = depthWidth;
        input.depth.height = depthHeight;
        input.personLostMs = lostMs;
    }

    /// From the story's beginning, at most that long.
    QList<Moment> play(double seconds = loopSeconds) {
        QList<Moment> moments;
        const int frameCount = int(seconds * framesPerSecond);
        for (int number = 0; number < frameCount; number += frameStep) {
            source->render(std::uint64_t(number), frames);
            now = start + number * 1000 / framesPerSecond;
            input.depth.depth_mm = QList<float>(frames.depth.begin(), frames.depth.end());
            pass();
            if (number % framesPerFacePass == 0) {
                lookForFaces();
                pass();
            }
            moments.append(
                {double(number) / framesPerSecond, state.followView, newest, status(), labels()});
            keepPicture(number);
        }
        return moments;
    }

private:
    void pass() {
        const AwarenessResult result = runAwarenessPass(state, input, [this] { return now; });
        input.faceOverlays = result.faceOverlays;
        regions = result.bodyRegions;
        newest = result.follow;
    }

    /// The result is that of the frame before: a pass takes its time.
    void lookForFaces() {
        input.faceOverlays = pendingFaces;
        cv::Mat grey = grayFrame(colour().convertToFormat(QImage::Format_RGB888));
        const FacePass found = findFaces(grey, tools, options, regions).value();
        tracks = updateFaceTracks(std::move(tracks), found.faces, now, lostMs);
        pendingFaces = faceOverlays(tracks, now, lostMs);
    }

    QImage colour() const {
        return QImage(frames.bgrx.data(), frames.colorWidth, frames.colorHeight,
                      QImage::Format_RGB32);
    }

    QString status() const {
        return followTexts::selectedFollowTarget(newest, state.followView, state.followTarget)
            .section(u" | "_s, 0, 0);
    }

    QStringList labels() const {
        QStringList names;
        for (const FaceOverlay& overlay : input.faceOverlays)
            names.append(overlay.label);
        return names;
    }

    void keepPicture(int number) const {
        const QString folder = qEnvironmentVariable("LUMENO_KEEP_PICTURES");
        if (folder.isEmpty() || number % framesPerSecond != 0)
            return;
        const QRect crop = state.followView.followCrop;
        const QString name = u"follow-%1.jpg"_s.arg(number / framesPerSecond, 2, 10, QChar(u'0'));
        colour().copy(crop.isValid() ? crop : QRect()).save(QDir(folder).filePath(name));
    }

    face::Options options;
    FaceTools tools = toolsThatKnowTheRoomsOwner(options);
    FaceTracks tracks;
    QList<FaceOverlay> pendingFaces;
    std::unique_ptr<virtual_kinect::FrameSource> source;
    virtual_kinect::FrameSet frames;
    AwarenessState state;
    AwarenessInput input;
    FollowPass newest;
    QList<QRect> regions;
    qint64 now = start;
};

} // namespace room_story_player
