// The stream tile's painting of hostile images, crops, overlays, texts and readings.

#include "fuzz_overlays.h"
#include "ui/stream_image_widget.h"

#include <QApplication>
#include <QImage>

namespace {

void startApplication() {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    static int count = 1;
    static char name[] = "overlay_painting_fuzz";
    static char* arguments[] = {name, nullptr};
    static const QApplication application(count, arguments);
}

/// Any four integers, or something near the image.
QRect rectFrom(FuzzInput& input) {
    if (input.flag())
        return boxFrom(input);
    return {QPoint(input.number<int>(), input.number<int>()),
            QPoint(input.number<int>(), input.number<int>())};
}

QImage imageFrom(FuzzInput& input) {
    constexpr QImage::Format formats[] = {QImage::Format_RGB888, QImage::Format_RGB32,
                                          QImage::Format_Grayscale8,
                                          QImage::Format_ARGB32_Premultiplied};
    const std::uint8_t kind = input.byte();
    if (kind % 8 == 0)
        return {};
    // A line of pixels in either direction, or an ordinary picture.
    const int width = kind % 8 == 1 ? input.between(1, 30000) : input.between(1, 320);
    const int height = kind % 8 == 2 ? input.between(1, 30000) : input.between(1, 240);
    QImage image(kind % 8 == 2 ? 1 : width, kind % 8 == 1 ? 1 : height,
                 formats[kind / 8 % std::size(formats)]);
    image.fill(input.byte());
    return image;
}

QList<FaceOverlay> hostileOverlays(FuzzInput& input) {
    QList<FaceOverlay> overlays = overlaysFrom(input, 4);
    for (FaceOverlay& overlay : overlays)
        overlay.rect = rectFrom(input);
    return overlays;
}

/// Painting the same state again gives the same picture, and every pixel of it is painted.
void checkPainting(StreamImageWidget& tile) {
    QImage first(tile.size(), QImage::Format_ARGB32_Premultiplied);
    QImage second(tile.size(), QImage::Format_ARGB32_Premultiplied);
    first.fill(Qt::transparent);
    second.fill(QColor(255, 0, 255));
    tile.render(&first);
    tile.render(&second);
    require(first == second, "what is shown depends on the state alone");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    startApplication();
    FuzzInput input(data, size);
    StreamImageWidget tile(input.text(), input.flag());
    tile.resize(input.between(120, 640), input.between(90, 400));
    for (int step = 0; step < 3; ++step) {
        const std::uint8_t changes = input.byte();
        if (step == 0 || (changes & 1) != 0)
            tile.setImage(imageFrom(input));
        if ((changes & 2) != 0)
            tile.setSourceCrop(rectFrom(input), input.text());
        if ((changes & 4) != 0)
            tile.setOverlays(hostileOverlays(input));
        if ((changes & 8) != 0)
            tile.setVoiceStatus(voiceFrom(input));
        if ((changes & 16) != 0)
            tile.resize(input.between(0, 640), input.between(0, 400));
        if ((changes & 32) != 0)
            tile.setPlaceholder(input.text());
        checkPainting(tile);
    }
    return 0;
}
