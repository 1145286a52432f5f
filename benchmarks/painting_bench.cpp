#include "ui/main_window.h"
#include "ui/stream_image_widget.h"

#include "frames/sensor_facts.h"
#include "frames/stream_frame.h"
#include "ratio_table.h"

#include <QCoreApplication>
#include <QPainter>
#include <QStackedWidget>

#include <benchmark/benchmark.h>

#include <array>
#include <cstring>
#include <memory>
#include <random>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize colorSize(sensor::colorWidth, sensor::colorHeight);
constexpr QSize depthSize(sensor::depthWidth, sensor::depthHeight);
constexpr QSize tileSize(1280, 720);
constexpr const char* plainWay = "scaled() of the RGB888 image, drawn";

QImage noisyImage(const QSize& size, unsigned seed) {
    std::mt19937 random(seed);
    QImage image(size, QImage::Format_RGB888);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width() * 3; ++x)
            image.scanLine(y)[x] = static_cast<uchar>(x / 8 + y + int(random() % 16));
    }
    return image;
}

/// Images in turn, so that every one is new to the tile that shows it; three, so that two tiles
/// that take turns do not meet their own again.
struct Source {
    explicit Source(const QSize& size)
        : images{noisyImage(size, 1), noisyImage(size, 2), noisyImage(size, 3)},
          frames{StreamFrame(images[0]), StreamFrame(images[1]), StreamFrame(images[2])} {}
    const QImage& nextImage() { return images[++turn % images.size()]; }
    const StreamFrame& nextFrame() { return frames[++turn % frames.size()]; }

    std::array<QImage, 3> images;
    std::array<StreamFrame, 3> frames;
    std::size_t turn = 0;
};

/// A tile of `size` logical pixels with the picture that it paints into, and the plain painter's.
struct Tile {
    explicit Tile(const QSize& size, const QSize& imageSize, int devicePixelRatio = 1)
        : source(imageSize), canvas(size * devicePixelRatio, QImage::Format_RGB32) {
        canvas.setDevicePixelRatio(devicePixelRatio);
        widget.resize(size);
    }
    void paint() { widget.render(&canvas, {}, {}, QWidget::DrawChildren); }
    void paintNewFrame() {
        widget.setFrame(source.nextFrame());
        paint();
    }
    void paintPlainly() {
        QPainter painter(&canvas);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        const auto ratio = static_cast<int>(canvas.devicePixelRatio());
        const QSize area = canvas.size() - QSize(12, 12) * ratio;
        QImage scaled =
            source.nextImage().scaled(area, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        scaled.setDevicePixelRatio(ratio);
        painter.drawImage(6 + (area.width() - scaled.width()) / 2 / ratio,
                          6 + (area.height() - scaled.height()) / 2 / ratio, scaled);
    }

    Source source;
    QImage canvas;
    StreamImageWidget widget{u"waiting"_s, true};
};

QList<FaceOverlay> threePeople(int step) {
    QList<FaceOverlay> overlays;
    for (int index = 0; index < 3; ++index) {
        FaceOverlay overlay;
        overlay.rect = QRect(200 + 500 * index + step, 150, 180, 200);
        overlay.label = u"Unknown"_s;
        overlay.color = QColor(255, 160, 60);
        overlay.hasDistance = true;
        overlay.distanceMeters = 2.0 + 0.01 * step;
        overlay.bodyOnly = index == 2;
        overlays.append(overlay);
    }
    return overlays;
}

VoiceDirectionStatus voiceAt(double angleDegrees) {
    VoiceDirectionStatus status;
    status.running = status.hasDirection = status.fresh = true;
    status.angleDegrees = angleDegrees;
    return status;
}

void decorate(StreamImageWidget& widget, int step) {
    widget.setOverlays(threePeople(step));
    widget.setSourceCrop(QRect(), u"VISIBLE FOLLOW ZOOM ACTIVE | %1"_s.arg(step));
    widget.setVoiceStatus(voiceAt(step - 50));
}

const RatioTable::Claim newFrame({
    .what = "new 1080p frame in a 1280x720 tile",
    .against = plainWay,
    .atMost = 0.55,
    .prepare =
        [] {
            const auto tile = std::make_shared<Tile>(tileSize, colorSize);
            return Contest{[=] { tile->paintNewFrame(); }, [=] { tile->paintPlainly(); }};
        },
});

/// A frame that was painted before, with everything over it new.
Contest newOverlaysOn(const std::shared_ptr<Tile>& tile) {
    const auto step = std::make_shared<int>(0);
    tile->paintNewFrame();
    return Contest{[=] {
                       decorate(tile->widget, ++*step % 100);
                       tile->paint();
                   },
                   [=] { tile->paintPlainly(); }};
}

const RatioTable::Claim sameFrame({
    .what = "same frame, new overlays, banner and voice",
    .against = plainWay,
    .atMost = 0.15,
    .prepare = [] { return newOverlaysOn(std::make_shared<Tile>(tileSize, colorSize)); },
});

const RatioTable::Claim sameFrameDense({
    .what = "same frame, new overlays, at two device pixels a pixel",
    .against = plainWay,
    .atMost = 0.15,
    .prepare = [] { return newOverlaysOn(std::make_shared<Tile>(tileSize, colorSize, 2)); },
});

/// The Combo view's tiles in a window of about 1440 x 810.
struct ComboTiles {
    Tile color{QSize(1040, 400), colorSize};
    Tile infrared{QSize(341, 160), depthSize};
    Tile depth{QSize(341, 160), depthSize};
};

const RatioTable::Claim comboFrames({
    .what = "new frames in Combo's three tiles",
    .against = "the plain way for three",
    .atMost = 0.55,
    .prepare =
        [] {
            const auto tiles = std::make_shared<ComboTiles>();
            const auto each = [tiles](void (Tile::*paint)()) {
                for (Tile* tile : {&tiles->color, &tiles->infrared, &tiles->depth})
                    (tile->*paint)();
            };
            return Contest{[=] { each(&Tile::paintNewFrame); }, [=] { each(&Tile::paintPlainly); }};
        },
});

/// Two pages with a tile each; both tiles get every frame, as in the window.
struct Pages {
    Pages() : source(colorSize) {
        for (StreamImageWidget*& tile : tiles) {
            tile = new StreamImageWidget(u"waiting"_s, true);
            stack.addWidget(tile);
        }
        stack.resize(tileSize);
        stack.show();
        QCoreApplication::processEvents();
    }
    void showNewFrame() {
        const StreamFrame& frame = source.nextFrame();
        for (StreamImageWidget* tile : tiles)
            tile->setFrame(frame);
        stack.repaint();
    }
    void switchPage() { stack.setCurrentIndex(1 - stack.currentIndex()); }

    Source source;
    QStackedWidget stack;
    std::array<StreamImageWidget*, 2> tiles{};
};

const RatioTable::Claim switchedView({
    .what = "first painting after a view is switched",
    .against = "a painting of the view that was shown",
    .atMost = 1.3,
    .prepare =
        [] {
            const auto pages = std::make_shared<Pages>();
            return Contest{[=] {
                               pages->switchPage();
                               pages->showNewFrame();
                           },
                           [=] { pages->showNewFrame(); }};
        },
});

/// The window with its eight tiles, one page of them on the screen, and no sensor.
struct Window {
    Window() {
        window.setView(u"rgb"_s);
        window.show();
        QCoreApplication::processEvents();
    }

    /// As the acquisition worker hands them over: two sets in turn, so that each is a new one.
    struct Set {
        QImage color = StreamFrame(noisyImage(colorSize, 1)).image();
        QImage infrared = StreamFrame(noisyImage(depthSize, 2)).image();
        QImage depth = StreamFrame(noisyImage(depthSize, 3)).image();
    };
    void showNextSet() {
        const Set& set = sets[++turn % sets.size()];
        window.onFramesReady(set.color, set.infrared, set.depth);
    }

    std::array<Set, 2> sets;
    std::size_t turn = 0;
    QImage copy = noisyImage(colorSize, 4);
    MainWindow window{false, true, false, false, 5000, false};
};

const RatioTable::Claim handOver({
    .what = "one frame set handed to eight tiles",
    .against = "memcpy of the colour image",
    .atMost = 0.1,
    .prepare =
        [] {
            const auto all = std::make_shared<Window>();
            return Contest{[=] { all->showNextSet(); },
                           [=] {
                               const QImage& color = all->sets[0].color;
                               std::memcpy(all->copy.bits(), color.constBits(),
                                           static_cast<std::size_t>(color.sizeInBytes()));
                               benchmark::ClobberMemory();
                           }};
        },
});

} // namespace
