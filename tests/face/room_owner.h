#pragma once

#include "face/face_pass.h"
#include "face/owner_model.h"
#include "face/owner_samples.h"
#include "room_samples.h"

#include <QDebug>
#include <opencv2/core/utility.hpp>
#include <vector>

/// What a face pass needs to know the virtual room's owner: both cascades, and a recogniser that is
/// trained with samples of the owner, written to the working folder. From then on OpenCV works in
/// its callers' threads, as in the program: the threads of its pool wait for each other by asking
/// again and again, which takes many times as long where other programs want the processor, too.
inline FaceTools toolsThatKnowTheRoomsOwner(const face::Options& options) {
    cv::setNumThreads(1);
    if (virtual_kinect::writeOwnerSamples(options.samplesDir) < 1)
        qFatal("no samples of the room's owner");
    std::vector<TrainingSample> samples;
    loadTavinSamples(options.samplesDir, samples);
    FaceTools tools;
    tools.recognizer = trainOwnerModel(samples);
    if (!loadCascade(tools.frontal, options.frontalCascadePath) ||
        !loadCascade(tools.profile, options.profileCascadePath))
        qFatal("no cascades");
    return tools;
}
