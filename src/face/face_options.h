#pragma once

#include <string>

namespace face {

/// Which detectors run over a picture.
enum class DetectorMode { Frontal, ProfileLeft, ProfileRight, FrontalOrProfile };

/// The settings of face detection and recognition: one value per run of the worker. Paths are
/// 8-bit file-system paths; relative ones start at the working directory.
struct Options {
    std::string samplesDir = "faces/tavin";               ///< The owner's training images.
    std::string modelPath = "models/face_recognizer.yml"; ///< Where the trained model is written.
    std::string frontalCascadePath =
        "/usr/share/opencv4/haarcascades/haarcascade_frontalface_default.xml";
    /// Trained on one side of the face; the other side is found on the mirror image.
    std::string profileCascadePath = "/usr/share/opencv4/haarcascades/haarcascade_profileface.xml";
    DetectorMode detector = DetectorMode::FrontalOrProfile;
    double candidateThreshold = 60.0; ///< Largest recognizer distance that counts as the owner.
    double detectScale = 0.5;         ///< The gray frame is shrunk by this before detection.
    double scaleFactor = 1.1;         ///< Cascade pyramid step.
    int minNeighbors = 4;             ///< Cascade minimum neighbors.
    int minFaceSize = 30;             ///< Smallest face side, full-resolution pixels.
    int minQualityFaceSize = 80;      ///< Smallest face side accepted for recognition, pixels.
    double minSharpness = 60.0;       ///< Smallest variance of the Laplacian, gray levels squared.
    double minBrightness = 35.0;      ///< Smallest mean gray level, 0 to 255.
    double maxBrightness = 220.0;     ///< Largest mean gray level, 0 to 255.
    double minContrast = 20.0;        ///< Smallest gray-level standard deviation.
};

} // namespace face
