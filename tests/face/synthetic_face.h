#pragma once

#include <QImage>
#include <opencv2/core.hpp>

/// A drawn face that the frontal cascade finds from a side of about 160 pixels up: 8-bit grey,
/// square, on a grey background of level 70. `person` chooses the texture of the skin.
cv::Mat syntheticFace(int sidePx, unsigned person = 1);

/// A grey frame of that size with a synthetic face of 180 pixels at (150, 60).
cv::Mat frameWithFace(unsigned person = 1, cv::Size size = {480, 360});

/// The same pixels as a colour frame.
QImage colourFrame(const cv::Mat& grey);
