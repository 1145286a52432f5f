#include "record/frame_encoding.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <stdexcept>

namespace record {

namespace {

/// 38 dB and more on what a room looks like; 90 saves a third of the bytes but softens faces.
constexpr int jpegQuality = 95;

/// A view of the pixels, which the codecs only read.
cv::Mat matOf(const FramePixels& pixels, int type) {
    return {pixels.height, pixels.width, type, const_cast<unsigned char*>(pixels.data.get())};
}

void encode(const char* kind, const cv::Mat& image, Bytes& out,
            const std::vector<int>& parameters) {
    if (!cv::imencode(kind, image, out, parameters))
        throw std::runtime_error("the image cannot be encoded");
}

} // namespace

const Bytes& FrameEncoder::jpeg(const FramePixels& color, bool rgbx) {
    cv::cvtColor(matOf(color, CV_8UC4), converted, rgbx ? cv::COLOR_RGBA2BGR : cv::COLOR_BGRA2BGR);
    encode(".jpg", converted, bytes, {cv::IMWRITE_JPEG_QUALITY, jpegQuality});
    return bytes;
}

const Bytes& FrameEncoder::png(const FramePixels& color, bool rgbx) {
    cv::cvtColor(matOf(color, CV_8UC4), converted, rgbx ? cv::COLOR_RGBA2BGR : cv::COLOR_BGRA2BGR);
    // No level of compression is asked for: with one OpenCV lets the codec try five filters on each
    // row, which takes twice the time for the same size.
    encode(".png", converted, bytes,
           {cv::IMWRITE_PNG_STRATEGY, cv::IMWRITE_PNG_STRATEGY_HUFFMAN_ONLY});
    return bytes;
}

const Bytes& FrameEncoder::wholeUnits(const FramePixels& floats) {
    matOf(floats, CV_32FC1).convertTo(converted, CV_16UC1);
    encode(".png", converted, bytes, {});
    return bytes;
}

} // namespace record
