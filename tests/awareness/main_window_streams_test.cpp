#include "app/record_types.h"
#include "awareness/follow_texts.h"
#include "support/log_capture.h"
#include "support/picture_compare.h"
#include "support/temporary_place.h"
#include "ui/main_window.h"
#include "ui/stream_image_widget.h"
#include "ui/stream_tiles.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>
#include <QTimer>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QImage filled(const QSize& size, const QColor& color) {
    QImage image(size, QImage::Format_RGB888);
    image.fill(color);
    return image;
}

const QSize colourSize(64, 48);
const QImage red = filled(colourSize, Qt::red);
const QImage grey = filled({32, 24}, Qt::gray);
const QImage blue = filled({32, 24}, Qt::blue);

/// A run without sensor and faces in which no overlay is rejected.
std::unique_ptr<MainWindow> mockWindow() {
    return std::make_unique<MainWindow>(true, true, false, false, 5000, false);
}

FaceOverlay ownerAt(const QRect& rect) {
    FaceOverlay overlay;
    overlay.rect = rect;
    overlay.label = u"Tavin"_s;
    overlay.color = Qt::green;
    return overlay;
}

bool showsVoice(const QString& tileKey) {
    return tileKey != u"combo_ir"_s && tileKey != u"combo_depth"_s;
}

/// In one format whatever the widget covers.
QImage picture(QWidget* widget) {
    return widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

/// What the tile paints, and what a new tile with this image and banner paints in its place.
struct Painted {
    QImage actual;
    QImage expected;
};

Painted paint(const MainWindow& window, const QString& tileKey, const QImage& image,
              const QString& banner = QString(), const QList<FaceOverlay>& boxes = {}) {
    StreamImageWidget* tile = window.streamLabel(tileKey);
    Painted painted;
    painted.actual = picture(tile); // Lays the tile out.
    StreamImageWidget expected(tileNamed(tileKey)->placeholder, showsVoice(tileKey),
                               tile->parentWidget());
    expected.resize(tile->size());
    expected.setImage(image);
    expected.setSourceCrop(QRect(), banner);
    expected.setOverlays(boxes);
    VoiceDirectionStatus noVoice;
    noVoice.reason = u"Auralis live event JSON not found"_s;
    if (!image.isNull()) // a tile is fed as a whole or not at all
        expected.setVoiceStatus(noVoice);
    painted.expected = picture(&expected);
    return painted;
}

QString paintedOtherwise(const MainWindow& window, const QString& tileKey, const QImage& image,
                         const QString& banner = QString()) {
    const Painted painted = paint(window, tileKey, image, banner);
    return pictureDifference(painted.actual, painted.expected, tileKey);
}

/// A picture of which no two parts are alike.
QImage gradient(const QSize& size) {
    QImage image(size, QImage::Format_RGB888);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixelColor(x, y, QColor(x * 255 / size.width(), y * 255 / size.height(), 90));
    }
    return image;
}

FaceOverlay unknownAt(const QRect& rect) {
    FaceOverlay overlay = ownerAt(rect);
    overlay.label = u"Unknown"_s;
    return overlay;
}

const QString uncroppedBanner =
    u"current view: COMBO | No follow target | crop applied to display: false"_s;

} // namespace

class MainWindowStreamsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyTileShowsItsStream_data();
    void everyTileShowsItsStream();
    void missingImagesLeaveThePreviousOnes();
    void withoutAnImageThePlaceholderStays();
    void theSendersBufferIsNotShared();
    void boxesAreDrawnOnColourTilesOnly_data();
    void boxesAreDrawnOnColourTilesOnly();
    void oddSizesAreShown_data();
    void oddSizesAreShown();
    void followTileNamesTheViewOnScreen();
    void followTileShowsTheCroppedPictureAndItsBoxes();
    void aPassLooksAtTheNewestDataAndTheSwitches();
    void depthStartsAPass();
    void whatAPassDroppedStaysDropped();
    void aPollStartsAPass();
    void recurringLinesAreWrittenOnceASecondInEveryView();
    void noFollowLineWithoutAColourImage();

private:
    const TemporaryPlace place; // a home without a voice service
};

void MainWindowStreamsTest::initTestCase() {
    registerRecordTypes();
}

void MainWindowStreamsTest::everyTileShowsItsStream_data() {
    QTest::addColumn<QImage>("image");
    QTest::addColumn<QString>("banner");
    for (const char* colour : {"rgb", "combo_rgb", "room_rgb"})
        QTest::newRow(colour) << red << QString();
    QTest::newRow("follow_rgb") << red << uncroppedBanner;
    for (const char* infrared : {"ir", "combo_ir"})
        QTest::newRow(infrared) << grey << QString();
    for (const char* depth : {"depth", "combo_depth"})
        QTest::newRow(depth) << blue << QString();
}

void MainWindowStreamsTest::everyTileShowsItsStream() {
    QFETCH(QImage, image);
    QFETCH(QString, banner);
    const auto window = mockWindow();
    window->onFramesReady(red, grey, blue);
    QCOMPARE(paintedOtherwise(*window, QString::fromLatin1(QTest::currentDataTag()), image, banner),
             QString());
}

void MainWindowStreamsTest::missingImagesLeaveThePreviousOnes() {
    const auto window = mockWindow();
    window->onFramesReady(red, grey, blue);
    window->onFramesReady(QImage(), QImage(), QImage());
    QCOMPARE(paintedOtherwise(*window, u"rgb"_s, red), QString());
    QCOMPARE(paintedOtherwise(*window, u"ir"_s, grey), QString());
    QCOMPARE(paintedOtherwise(*window, u"depth"_s, blue), QString());

    const QImage newer = filled(colourSize, Qt::yellow);
    window->onFramesReady(newer, QImage(), QImage());
    QCOMPARE(paintedOtherwise(*window, u"rgb"_s, newer), QString());
    QCOMPARE(paintedOtherwise(*window, u"combo_ir"_s, grey), QString());
}

void MainWindowStreamsTest::withoutAnImageThePlaceholderStays() {
    const auto window = mockWindow();
    window->onFramesReady(QImage(), grey, QImage());
    QCOMPARE(paintedOtherwise(*window, u"rgb"_s, QImage()), QString());
    QCOMPARE(paintedOtherwise(*window, u"combo_depth"_s, QImage()), QString());
    QCOMPARE(paintedOtherwise(*window, u"ir"_s, grey), QString());
}

void MainWindowStreamsTest::theSendersBufferIsNotShared() {
    const auto window = mockWindow();
    QByteArray buffer(4 * 3 * 4, char(200));
    const QImage borrowed(reinterpret_cast<uchar*>(buffer.data()), 4, 4, 12, QImage::Format_RGB888);
    const QImage before = borrowed.copy();
    window->onFramesReady(borrowed, QImage(), QImage());
    buffer.fill(0);
    QCOMPARE(paintedOtherwise(*window, u"rgb"_s, before), QString());
}

void MainWindowStreamsTest::boxesAreDrawnOnColourTilesOnly_data() {
    QTest::addColumn<QImage>("image");
    QTest::addColumn<bool>("boxed");
    for (const char* colour : {"rgb", "combo_rgb", "room_rgb"})
        QTest::newRow(colour) << red << true;
    for (const char* infrared : {"ir", "combo_ir"})
        QTest::newRow(infrared) << grey << false;
    for (const char* depth : {"depth", "combo_depth"})
        QTest::newRow(depth) << blue << false;
}

void MainWindowStreamsTest::boxesAreDrawnOnColourTilesOnly() {
    QFETCH(QImage, image);
    const QString tileKey = QString::fromLatin1(QTest::currentDataTag());
    const auto window = mockWindow();
    window->onFramesReady(red, grey, blue);
    window->onFaceOverlaysReady({ownerAt({8, 6, 20, 20})});
    const Painted painted = paint(*window, tileKey, image);
    QTEST(painted.actual != painted.expected, "boxed");

    window->onFaceOverlaysReady({});
    QCOMPARE(paintedOtherwise(*window, tileKey, image), QString());
}

void MainWindowStreamsTest::oddSizesAreShown_data() {
    QTest::addColumn<QSize>("size");
    QTest::newRow("one pixel") << QSize(1, 1);
    QTest::newRow("a column") << QSize(1, 3000);
    QTest::newRow("a row") << QSize(3000, 1);
    QTest::newRow("odd") << QSize(513, 427);
    QTest::newRow("larger than the window") << QSize(3001, 2003);
}

void MainWindowStreamsTest::oddSizesAreShown() {
    QFETCH(QSize, size);
    const auto window = mockWindow();
    const QImage image = filled(size, Qt::cyan);
    window->onFramesReady(image, image, image);
    for (const QString& tileKey : {u"rgb"_s, u"combo_ir"_s, u"depth"_s})
        QCOMPARE(paintedOtherwise(*window, tileKey, image), QString());
    QCOMPARE(paintedOtherwise(*window, u"follow_rgb"_s, image, uncroppedBanner), QString());
}

void MainWindowStreamsTest::followTileNamesTheViewOnScreen() {
    const auto window = mockWindow();
    window->setView(u"follow"_s);
    window->onFramesReady(red, QImage(), QImage());
    QCOMPARE(paintedOtherwise(*window, u"follow_rgb"_s, red,
                              u"current view: FOLLOW | No follow target | crop applied to "
                              "display: false"_s),
             QString());
}

void MainWindowStreamsTest::followTileShowsTheCroppedPictureAndItsBoxes() {
    const auto window = mockWindow();
    for (QTimer* timer : window->findChildren<QTimer*>())
        timer->stop(); // no poll in between, which would run one pass more
    const QImage image = gradient({960, 540});
    FaceOverlay face = unknownAt({250, 150, 60, 80});
    face.hasDistance = true;
    face.distanceMeters = 2.0;
    const QList<FaceOverlay> faces{face, unknownAt({10, 10, 20, 20})};
    window->onFramesReady(image, QImage(), QImage());

    AwarenessState state;
    AwarenessInput input = window->awarenessInput();
    input.faceOverlays = faces;
    AwarenessResult result;
    for (int pass = 0; pass < 12; ++pass) {
        window->onFaceOverlaysReady(faces);
        result = runAwarenessPass(state, input, [] { return qint64(1'700'000'000'000); });
    }
    const QRect crop = state.followView.followCrop;
    // A second crop of the cropped picture would meet it.
    QVERIFY(crop.left() > 0 && crop.left() < crop.width());
    QVERIFY(crop.top() > 0 && crop.top() < crop.height() && crop.width() < 700);
    FaceOverlay moved = face;
    moved.rect.translate(-crop.topLeft());
    const QString banner =
        u"VISIBLE FOLLOW ZOOM ACTIVE | current view: COMBO | %1 | crop applied to display: true | "
        "crop %2,%3 %4x%5"_s
            .arg(followTexts::selectedFollowTarget(result.follow, state.followView,
                                                   state.followTarget))
            .arg(crop.left())
            .arg(crop.top())
            .arg(crop.width())
            .arg(crop.height());
    const Painted painted = paint(*window, u"follow_rgb"_s, image.copy(crop), banner, {moved});
    QCOMPARE(pictureDifference(painted.actual, painted.expected, u"follow_rgb"_s), QString());
}

void MainWindowStreamsTest::aPassLooksAtTheNewestDataAndTheSwitches() {
    for (const bool on : {false, true}) {
        MainWindow window(on, true, false, false, on ? 1234 : 0, on);
        window.onFramesReady(red, grey, blue);
        window.onDepthRawReady({2000.0F, 2001.0F, 2002.0F, 2003.0F, 2004.0F, 2005.0F}, 3, 2);
        const AwarenessInput input = window.awarenessInput();
        QCOMPARE(input.imageSize, colourSize);
        QCOMPARE(input.depth.depth_mm.size(), 6);
        QCOMPARE(input.depth.depth_mm.last(), 2005.0F);
        QCOMPARE(QSize(input.depth.width, input.depth.height), QSize(3, 2));
        QCOMPARE(input.voiceStatus.reason, u"Auralis live event JSON not found"_s);
        QCOMPARE(input.layoutDebug, on);
        QCOMPARE(input.personLostMs, on ? 1234 : 0);
        QCOMPARE(input.invertAudioDirection, on);
    }
}

void MainWindowStreamsTest::depthStartsAPass() {
    const auto window = mockWindow();
    window->onFramesReady(red, QImage(), QImage());
    window->onFaceOverlaysReady({unknownAt({8, 6, 20, 20})});
    QVERIFY(!window->awarenessInput().faceOverlays.at(0).hasDistance);
    window->onDepthRawReady(QList<float>(20 * 10, 1500.0F), 20, 10);
    QCOMPARE(window->awarenessInput().faceOverlays.at(0).distanceMeters, 1.5);
}

void MainWindowStreamsTest::whatAPassDroppedStaysDropped() {
    MainWindow window(false, true, false, false, 5000, false);
    window.onFramesReady(red, grey, blue);
    FaceOverlay photograph = unknownAt({8, 6, 20, 20});
    photograph.depthMissing = true;
    window.onFaceOverlaysReady({photograph});
    QVERIFY(window.awarenessInput().faceOverlays.isEmpty());
    window.onFramesReady(red, grey, blue);
    QCOMPARE(paintedOtherwise(window, u"rgb"_s, red), QString());
}

void MainWindowStreamsTest::aPollStartsAPass() {
    const auto window = mockWindow();
    window->onFramesReady(red, QImage(), QImage());
    window->onFaceOverlaysReady({unknownAt({22, 6, 20, 20})});
    const QString folder = place.home() + u"/.local/state/lumeno"_s;
    QVERIFY(QDir().mkpath(folder));
    QFile pid(folder + u"/auralis-live.pid"_s);
    QVERIFY(pid.open(QIODevice::WriteOnly));
    pid.write(QByteArray::number(getpid()));
    pid.close();
    QFile event(folder + u"/auralis-live-event.json"_s);
    QVERIFY(event.open(QIODevice::WriteOnly));
    event.write(R"({"status": "running", "direction_angle_degrees": 0.0, )"
                R"("direction_confidence": 0.9})");
    event.close();
    window->pollAuralisStatus();
    QVERIFY(!window->awarenessInput().faceOverlays.at(0).speakerNote.isEmpty());
    QVERIFY(pid.remove() && event.remove());
}

void MainWindowStreamsTest::recurringLinesAreWrittenOnceASecondInEveryView() {
    const LogCapture log;
    const auto lines = [&log] { return log.linesStartingWith(u"Qt follow display:"_s); };
    const auto awarenessLines = [&log] {
        return log.linesStartingWith(u"Qt awareness overlays:"_s).size();
    };
    const auto window = mockWindow(); // its first poll runs a pass
    QElapsedTimer sinceFirst;
    sinceFirst.start();
    QCOMPARE(awarenessLines(), 1);
    for (int frame = 0; frame < 20; ++frame) {
        window->onFramesReady(red, grey, blue);
        window->updateAwarenessOverlays();
    }
    if (sinceFirst.elapsed() < 900) {
        QCOMPARE(lines().size(), 1);
        QCOMPARE(awarenessLines(), 1);
    }
    QCOMPARE(lines().first(),
             u"Qt follow display: current_view= \"combo\" crop_applied_to_display= false "
             "follow_zoom= 1 follow_crop= QRect(0,0 0x0) display_image= QSize(64, 48) "
             "source_image= QSize(64, 48) status= \""_s +
                 uncroppedBanner + u"\""_s);

    window->setView(u"depth"_s);
    const auto secondLine = [&] {
        window->onFramesReady(red, grey, blue);
        window->updateAwarenessOverlays();
        return lines().size() >= 2 && awarenessLines() >= 2;
    };
    QTRY_VERIFY_WITH_TIMEOUT(secondLine(), 3000);
    // The lines go by the wall clock in whole milliseconds.
    QVERIFY2(sinceFirst.elapsed() >= 999, "at most one line a second");
    QVERIFY(lines().last().startsWith(u"Qt follow display: current_view= \"depth\""_s));
}

void MainWindowStreamsTest::noFollowLineWithoutAColourImage() {
    const auto window = mockWindow();
    const LogCapture log;
    window->onFramesReady(QImage(), grey, blue);
    window->updateStreamPixmaps();
    QCOMPARE(log.linesStartingWith(u"Qt follow display:"_s), QStringList());
}

QTEST_MAIN(MainWindowStreamsTest)
#include "main_window_streams_test.moc"
