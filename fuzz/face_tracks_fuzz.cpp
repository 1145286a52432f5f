// Merging of detections and the tracks made of them, over a few seconds of frames.

#include "app/identity.h"
#include "face/face_detection.h"
#include "face/face_tracks.h"
#include "fuzz_input.h"

#include <set>

namespace {

const char* const detectors[] = {"frontal", "profile_left", "profile_right", "frontal+far_crop",
                                 "profile_left+far_crop"};

/// Boxes of a frame: a detector's are inside it and not empty.
cv::Rect boxFrom(FuzzInput& input) {
    const int x = input.between(0, 1900);
    const int y = input.between(0, 1060);
    return cv::Rect(x, y, input.between(1, 1920 - x), input.between(1, 1080 - y));
}

std::vector<FaceDetection> detectionsFrom(FuzzInput& input) {
    std::vector<FaceDetection> detections(input.byte() % 12);
    for (FaceDetection& detection : detections)
        detection = {boxFrom(input), detectors[input.byte() % std::size(detectors)]};
    // Hits that nearly agree are what merging is about.
    if (!detections.empty() && input.flag()) {
        FaceDetection beside = detections.front();
        beside.rect.x += input.between(-8, 8);
        beside.rect.width = std::max(1, beside.rect.width + input.between(-8, 8));
        detections.push_back(beside);
    }
    return detections;
}

std::vector<FaceObservation> observe(FuzzInput& input, const std::vector<FaceDetection>& merged) {
    std::vector<FaceObservation> faces;
    for (const FaceDetection& hit : merged) {
        const std::uint8_t asked = input.byte();
        faces.push_back({hit.rect, hit.detector, asked % 8 == 0, asked % 3 == 0 ? 0.0 : 45.5});
    }
    return faces;
}

void checkTracks(const FaceTracks& now, qint64 nowMs, bool ownerSeen) {
    std::set<int> ids;
    for (const face::Track& track : now.tracks) {
        require(track.id >= 1 && track.id < now.nextId && ids.insert(track.id).second,
                "every track has a number of its own");
        require(track.hits >= 1 && track.hits <= 12, "hits are counted from 1 to 12");
        require(track.ownerHits >= 0 && track.ownerHits <= 8 && track.nonOwnerStreak >= 0 &&
                    track.nonOwnerStreak <= 8,
                "votes are counted from 0 to 8");
        require(track.firstSeenMs <= track.lastSeenMs && track.lastSeenMs <= nowMs,
                "times are in order");
        require(track.label == identity::owner || track.label == identity::unknown,
                "a face is the owner's or unknown");
        require(ownerSeen || track.label == identity::unknown, "nobody becomes the owner unseen");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    FaceTracks tracks;
    const int lostTimeoutMs = input.between(0, 10000);
    qint64 nowMs = 1 + input.number<std::uint32_t>();
    bool ownerSeen = false;
    while (input.bytesLeft() > 0) {
        const std::vector<FaceDetection> detections = detectionsFrom(input);
        const std::vector<FaceDetection> merged = dedupeDetections(detections);
        require(merged.size() <= detections.size() && merged.empty() == detections.empty(),
                "merging loses no face and makes none");
        const std::vector<FaceObservation> faces = observe(input, merged);
        for (const FaceObservation& face : faces)
            ownerSeen = ownerSeen || face.owner;
        const int repeats = input.byte() % 10;
        for (int frame = 0; frame <= repeats; ++frame) {
            nowMs += input.byte();
            tracks = updateFaceTracks(std::move(tracks), faces, nowMs, lostTimeoutMs);
            checkTracks(tracks, nowMs, ownerSeen);
        }
        const QList<FaceOverlay> overlays = faceOverlays(tracks, nowMs, lostTimeoutMs);
        require(overlays.size() <= static_cast<qsizetype>(tracks.tracks.size()),
                "no overlay without a track");
        for (const FaceOverlay& overlay : overlays)
            require(overlay.label != identity::owner || overlay.color == identity::ownerColor,
                    "the owner is green");
        require(!faceOverlaysLogLine(overlays).contains(u'\n'), "a log line is one line");
    }
    return 0;
}
