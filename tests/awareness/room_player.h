#pragma once

#include "awareness/awareness_pass.h"
#include "awareness/depth_scene.h"
#include "awareness/follow_texts.h"
#include "awareness/overlays.h"

#include <optional>

/// Somebody in a simulated room, at one moment.
struct Actor {
    double across = 0.5;     ///< Where the middle of the body is: 0 left edge, 1 right edge.
    double distance_m = 2.0; ///< From the sensor.
    QString face;            ///< Whom the face worker sees there; empty while it sees no face.
};

/// Plays scenes through the awareness pass as the window does: 30 depth frames a second, a face
/// result five times a second, the list of overlays handed from pass to pass. Faces that are no
/// longer seen are remembered by the face worker, as it does, for the lost time.
class RoomPlayer {
public:
    static constexpr int fps = 30;
    static constexpr qint64 start = 1'700'000'000'000;

    explicit RoomPlayer(int personLostMs = 5000) {
        input.imageSize = QSize(1920, 1080);
        input.personLostMs = personLostMs;
    }

    /// The next frame of the room, the farthest actor first.
    void play(const QList<Actor>& actors) {
        now = start + frame * 1000 / fps;
        DepthScene scene(512, 424, 4500.0F);
        for (const Actor& actor : actors)
            paint(scene, actor);
        input.depth = scene.frame();
        pass();
        if (frame % 6 == 0) {
            input.faceOverlays = faceResult(actors);
            pass();
        }
        ++frame;
    }

    /// Box of an actor's face in the image.
    static QRect faceBox(const Actor& actor) {
        const double scale = focal / actor.distance_m;
        const int side = int(0.24 * scale);
        return QRect(int(1920 * actor.across) - side / 2, int(540 - 0.32 * scale), side, side);
    }

    /// The follow status as the Follow view shows it.
    QString status() const {
        return followTexts::selectedFollowTarget(result.follow, state.followView,
                                                 state.followTarget);
    }

    AwarenessState state;
    AwarenessInput input;
    AwarenessResult result;
    qint64 now = start;
    qint64 frame = 0;

private:
    static constexpr double focal = 1066.0; // pixels, 84 degrees across

    struct Remembered {
        QString name;
        QRect box;
        qint64 seenMs;
    };

    void pass() {
        result = runAwarenessPass(state, input, [this] { return now; });
        input.faceOverlays = result.faceOverlays;
    }

    /// 1.75 m tall, seen from 1.4 m above the floor.
    static void paint(DepthScene& scene, const Actor& actor) {
        const double scale = focal / actor.distance_m * 424 / 1080;
        const int top = int(212 - 0.35 * scale);
        scene.stand(int(512 * actor.across), top, int(1.75 * scale),
                    float(actor.distance_m * 1000));
    }

    QList<FaceOverlay> faceResult(const QList<Actor>& actors) {
        for (const Actor& actor : actors) {
            if (actor.face.isEmpty())
                continue;
            memory.removeIf([&](const Remembered& face) { return face.name == actor.face; });
            memory.append({actor.face, faceBox(actor), now});
        }
        memory.removeIf(
            [this](const Remembered& face) { return now - face.seenMs > input.personLostMs; });
        QList<FaceOverlay> list;
        for (const Remembered& face : memory) {
            list.append(overlays::face(face.name, face.box));
            list.last().stale = now - face.seenMs > 500;
        }
        return list;
    }

    QList<Remembered> memory;
};
