#pragma once

#include "enroll/sitting.h"
#include "face/owner_samples.h"
#include "face/synthetic_face.h"

/// A sample of the drawn face, as a sitting keeps it.
inline enroll::KeptSample keptSample(unsigned texture, enroll::Distance distance,
                                     enroll::Pose pose = enroll::Pose::Front, int light = 1) {
    enroll::FaceLook face{cv::Rect(500, 300, 200, 200),
                          "frontal",
                          {200, 120.5, 50.0, 400.0, 0.01, 0.1},
                          recognizerInput(syntheticFace(180, texture)),
                          1.02};
    return {face, distance, pose, light, 0, 1'700'000'000'000};
}
