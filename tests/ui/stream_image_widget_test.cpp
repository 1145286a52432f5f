#include "ui/stream_image_widget.h"

#include "support/picture_compare.h"
#include "ui/plain_stream_painter.h"
#include "ui/stream_geometry.h"
#include "ui/stream_scenes.h"
#include "ui/style_sheet.h"

#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>
#include <functional>
#include <limits>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
const QString followLabel = u"VISIBLE FOLLOW ZOOM ACTIVE | current view: FOLLOW"_s;

QString differenceFromPlain(const StreamScene& scene, const QSize& size, qreal ratio = 1.0) {
    const auto widget = widgetOf(scene, size);
    return pictureDifference(shot(*widget, ratio), paintPlainly(scene, size, widget->font(), ratio),
                             QString::fromLatin1(QTest::currentTestFunction()));
}

/// Counts how often a widget paints.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget* watched) { watched->installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            ++count;
        return false;
    }
};

} // namespace

class StreamImageWidgetTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void hasItsNameSizesAndPolicy();
    void everySceneIsPaintedAsStepByStep_data();
    void everySceneIsPaintedAsStepByStep();
    void highDensityScreensShowTheirOwnPixels_data();
    void highDensityScreensShowTheirOwnPixels();
    void theWidgetFontOfTheStyleSheetIsUsed();
    void withoutAnImageOnlyThePlaceholderIsShown();
    void aNullImageBringsThePlaceholderBack();
    void aCropOutsideTheImageShowsAllOfIt();
    void anOverlayOutsideTheCropIsSkipped();
    void aBannerFollowsTheLabel();
    void lightsShowTheDirection_data();
    void lightsShowTheDirection();
    void theVoiceOverlayIsOnlyWhereItIsAskedFor();
    void aLowWidgetShowsLightsWithoutText();
    void thePixelsAreThoseOfAShrunkColourFrame();
    void everyChangeIsSeenAtOnce();
    void theSendersBufferMayChange();
    void anOpaqueGroundIsLeftUnderATranslucentImage();
    void formatsOtherThanTheSensorsAreShown_data();
    void formatsOtherThanTheSensorsAreShown();
    void aFrameIsSharedByTiles();
    void severalSettersCostOnePainting();
    void eachSetterAloneGivesOnePainting_data();
    void eachSetterAloneGivesOnePainting();
    void anOverlayWithNoFieldSetIsSolidAndBlack();
    void anUncertainLightHasItsOwnOutline();
    void aBannerIsHighlightedWhereverTheWordsStand();
    void aPlaceholderWithALineBreakIsOneLine();
    void aHiddenTileDoesNoWork();
    void nothingBelowATileIsPaintedWithIt();
    void aTextWithLineBreaksIsOneLine();
};

void StreamImageWidgetTest::hasItsNameSizesAndPolicy() {
    const StreamImageWidget widget(u"waiting"_s, true);
    QCOMPARE(widget.objectName(), u"streamImage"_s);
    QCOMPARE(widget.minimumSize(), QSize(120, 90));
    QCOMPARE(widget.minimumSizeHint(), QSize(120, 90));
    QCOMPARE(widget.sizeHint(), QSize(960, 540));
    QCOMPARE(widget.sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(widget.sizePolicy().verticalPolicy(), QSizePolicy::Expanding);
}

void StreamImageWidgetTest::everySceneIsPaintedAsStepByStep_data() {
    QTest::addColumn<StreamScene>("scene");
    QTest::addColumn<QSize>("size");
    const QSize usual(640, 360);

    QTest::newRow("nothing yet") << StreamScene() << usual;
    StreamScene wrapped;
    wrapped.placeholder = u"Kinect unavailable: no Kinect v2 device detected"_s;
    wrapped.showVoice = true;
    QTest::newRow("wrapped placeholder with voice") << wrapped << QSize(160, 180);

    StreamScene scene = sceneWithImage();
    QTest::newRow("image") << scene << usual;
    QTest::newRow("odd size") << scene << QSize(641, 333);
    QTest::newRow("narrow") << scene << QSize(121, 500);
    QTest::newRow("smallest") << scene << QSize(120, 90);
    QTest::newRow("no room for the image") << scene << QSize(12, 90);
    QTest::newRow("larger than the image") << sceneWithImage(QSize(64, 53)) << usual;
    QTest::newRow("one pixel") << sceneWithImage(QSize(1, 1)) << usual;
    QTest::newRow("a column") << sceneWithImage(QSize(1, 4000)) << usual;
    QTest::newRow("a row") << sceneWithImage(QSize(4001, 1)) << usual;

    scene.overlays = overlaysOfEveryKind();
    QTest::newRow("overlays") << scene << usual;
    QTest::newRow("overlays in a large widget") << scene << QSize(1500, 900);
    scene.crop = QRect(QPoint(100, 50), QPoint(739, 409));
    QTest::newRow("crop") << scene << usual;
    scene.crop = QRect(701, 333, 1000, 1000);
    scene.label = u"room crop with a name that is too long for the narrow widget"_s;
    QTest::newRow("crop over the edge, banner") << scene << QSize(400, 300);
    scene.label = followLabel;
    scene.showVoice = true;
    QTest::newRow("follow banner and voice") << scene << usual;
    QTest::newRow("follow banner in a narrow widget") << scene << QSize(300, 200);
    scene.voice = direction(20.0);
    for (const QSize& size : {QSize(419, 300), QSize(420, 300), QSize(519, 300), QSize(520, 300),
                              QSize(640, 149), QSize(640, 150), QSize(640, 169), QSize(640, 170)}) {
        QTest::addRow("voice on %dx%d", size.width(), size.height()) << scene << size;
    }
    scene.voice = VoiceDirectionStatus();
    scene.voice.running = true;
    QTest::newRow("voice running without a direction") << scene << usual;
}

void StreamImageWidgetTest::everySceneIsPaintedAsStepByStep() {
    QFETCH(StreamScene, scene);
    QFETCH(QSize, size);
    const QString difference = differenceFromPlain(scene, size);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void StreamImageWidgetTest::highDensityScreensShowTheirOwnPixels_data() {
    QTest::addColumn<qreal>("ratio");
    for (const qreal ratio : {1.25, 1.5, 2.0, 3.0})
        QTest::addRow("%g", ratio) << ratio;
}

void StreamImageWidgetTest::highDensityScreensShowTheirOwnPixels() {
    QFETCH(qreal, ratio);
    StreamScene scene = sceneWithImage();
    scene.overlays = overlaysOfEveryKind();
    scene.crop = QRect(30, 20, 1111, 555);
    scene.label = followLabel;
    scene.showVoice = true;
    scene.voice = direction(-30.0);
    const QString difference = differenceFromPlain(scene, QSize(480, 300), ratio);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void StreamImageWidgetTest::theWidgetFontOfTheStyleSheetIsUsed() {
    StreamScene scene = sceneWithImage();
    scene.overlays = overlaysOfEveryKind();
    scene.showVoice = true;
    scene.label = u"room crop"_s;
    const auto widget = widgetOf(scene, QSize(640, 360));
    widget->setStyleSheet(applicationStyleSheet());
    const QImage painted = shot(*widget);
    QVERIFY(widget->font().bold());
    const QString difference = pictureDifference(
        painted, paintPlainly(scene, QSize(640, 360), widget->font()), u"styled-stream"_s);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void StreamImageWidgetTest::withoutAnImageOnlyThePlaceholderIsShown() {
    StreamScene bare;
    StreamScene full;
    full.overlays = overlaysOfEveryKind();
    full.label = followLabel;
    full.crop = QRect(0, 0, 100, 100);
    QCOMPARE(paint(full, QSize(640, 360)), paint(bare, QSize(640, 360)));

    bare.placeholder.clear();
    QVERIFY(paint(full, QSize(640, 360)) != paint(bare, QSize(640, 360)));
}

void StreamImageWidgetTest::aNullImageBringsThePlaceholderBack() {
    const auto widget = widgetOf(sceneWithImage(), QSize(320, 200));
    shot(*widget);
    widget->setImage(QImage());
    QCOMPARE(shot(*widget), paint(StreamScene(), QSize(320, 200)));
    StreamScene error;
    error.placeholder = u"Kinect unavailable: busy"_s;
    widget->setPlaceholder(error.placeholder);
    QCOMPARE(shot(*widget), paint(error, QSize(320, 200)));
}

void StreamImageWidgetTest::aCropOutsideTheImageShowsAllOfIt() {
    StreamScene scene = sceneWithImage();
    scene.overlays = overlaysOfEveryKind();
    const QImage whole = paint(scene, QSize(640, 360));
    scene.crop = QRect(1280, 10, 200, 200);
    QCOMPARE(paint(scene, QSize(640, 360)), whole);
    scene.crop = QRect(QPoint(300, 10), QPoint(200, 100));
    QCOMPARE(paint(scene, QSize(640, 360)), whole);
}

void StreamImageWidgetTest::anOverlayOutsideTheCropIsSkipped() {
    StreamScene scene = sceneWithImage();
    scene.crop = QRect(QPoint(100, 50), QPoint(739, 409));
    const QImage without = paint(scene, QSize(652, 372)); // the crop at its own size
    scene.overlays = {box(QRect(10, 10, 20, 20))};
    QCOMPARE(paint(scene, QSize(652, 372)), without);

    scene.overlays = {box(QRect(90, 40, 20, 20))};
    scene.overlays[0].label.clear();
    scene.overlays[0].tier.clear();
    const QImage with = paint(scene, QSize(652, 372));
    QVERIFY(with != without);
    // Its box is clipped to the image's first ten pixels; its tag is the shortest.
    QCOMPARE(with.pixelColor(6 + 74, 6 + 11), QColor(255, 120, 30));
    QCOMPARE(with.pixelColor(6 + 76, 6 + 11), without.pixelColor(6 + 76, 6 + 11));
    QCOMPARE(with.pixelColor(2, 10), without.pixelColor(2, 10));
}

void StreamImageWidgetTest::aBannerFollowsTheLabel() {
    StreamScene scene = sceneWithImage();
    scene.image.fill(Qt::black);
    const QPoint fill(620, 30);
    scene.label = u"visible follow zoom active"_s;
    const QImage other = paint(scene, QSize(640, 360));
    QCOMPARE(other.pixelColor(fill), QColor(7, 11, 17)); // 180 of 255 over black
    scene.label = followLabel;
    const QImage follow = paint(scene, QSize(640, 360));
    QCOMPARE(follow.pixelColor(320, 8), QColor(91, 232, 134));
    scene.label.clear();
    QCOMPARE(paint(scene, QSize(640, 360)).pixelColor(fill), QColor(Qt::black));
}

void StreamImageWidgetTest::lightsShowTheDirection_data() {
    QTest::addColumn<double>("angle");
    QTest::addColumn<bool>("inverted");
    QTest::addColumn<bool>("low");
    QTest::addColumn<int>("lit");
    QTest::newRow("-60") << -60.0 << false << false << 0;
    QTest::newRow("+60") << 60.0 << false << false << 5;
    QTest::newRow("0") << 0.0 << false << false << 3;
    QTest::newRow("-60 inverted") << -60.0 << true << false << 5;
    QTest::newRow("+60 inverted") << 60.0 << true << false << 0;
    QTest::newRow("0 inverted") << 0.0 << true << false << 2;
    QTest::newRow("low confidence") << 0.0 << false << true << 3;
    QTest::newRow("not a number") << notANumber << false << false << -1;
}

void StreamImageWidgetTest::lightsShowTheDirection() {
    QFETCH(double, angle);
    QFETCH(bool, inverted);
    QFETCH(bool, low);
    QFETCH(int, lit);
    StreamScene scene;
    scene.showVoice = true;
    scene.voice = direction(angle, inverted, low);
    const QImage large = paint(scene, QSize(640, 360));
    const QImage small = paint(scene, QSize(419, 149));
    const QColor on = low ? QColor(105, 112, 124) : QColor(91, 232, 134);
    for (int index = 0; index < 6; ++index) {
        const QColor expected = index == lit ? on : QColor(41, 50, 64);
        QCOMPARE(large.pixelColor(319 - 83 + index * 29 + 11, 359 - 44 + 4), expected);
        QCOMPARE(small.pixelColor(209 - 60 + index * 21 + 8, 148 - 24 + 4), expected);
    }
}

void StreamImageWidgetTest::theVoiceOverlayIsOnlyWhereItIsAskedFor() {
    StreamScene scene = sceneWithImage();
    const QImage without = paint(scene, QSize(640, 360));
    scene.voice = direction(10.0);
    QCOMPARE(paint(scene, QSize(640, 360)), without);
    scene.showVoice = true;
    QVERIFY(paint(scene, QSize(640, 360)) != without);
}

void StreamImageWidgetTest::aLowWidgetShowsLightsWithoutText() {
    StreamScene scene;
    scene.placeholder.clear();
    scene.showVoice = true;
    const auto belowTheLights = [&](const QSize& size) {
        const QImage painted = paint(scene, size);
        return painted.copy(2, size.height() - 15, size.width() - 4, 12);
    };
    QImage ground = belowTheLights(QSize(640, 149));
    const QImage text = belowTheLights(QSize(640, 150));
    QVERIFY(text != ground);
    ground.fill(QColor(7, 11, 16));
    QCOMPARE(belowTheLights(QSize(640, 149)), ground);
}

void StreamImageWidgetTest::thePixelsAreThoseOfAShrunkColourFrame() {
    const StreamScene scene = sceneWithImage(QSize(1920, 1080));
    const QImage painted = paint(scene, QSize(1280, 720));
    const QImage scaled =
        scene.image.scaled(1268, 708, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    const QPoint corner(6 + (1268 - scaled.width()) / 2, 6 + (708 - scaled.height()) / 2);
    QCOMPARE(painted.copy(QRect(corner, scaled.size())),
             scaled.convertToFormat(QImage::Format_RGB32));
}

void StreamImageWidgetTest::everyChangeIsSeenAtOnce() {
    StreamScene scene = sceneWithImage();
    QSize size(640, 360);
    const auto widget = widgetOf(scene, size);
    const auto verify = [&](const QString& after) {
        const QString difference = pictureDifference(
            shot(*widget), paintPlainly(scene, size, widget->font()), u"changed-stream"_s);
        QVERIFY2(difference.isEmpty(), qPrintable(after + u": "_s + difference));
    };
    verify(u"start"_s);
    widget->setImage(scene.image = testImage(QSize(1280, 720), QImage::Format_RGB888, 1));
    verify(u"image"_s);
    widget->setOverlays(scene.overlays = overlaysOfEveryKind());
    verify(u"overlays"_s);
    scene.crop = QRect(100, 50, 640, 360);
    widget->setSourceCrop(scene.crop, scene.label);
    verify(u"crop"_s);
    scene.crop.translate(1, 0);
    widget->setSourceCrop(scene.crop, scene.label);
    verify(u"crop of the same size"_s);
    widget->setImage(scene.image = testImage(QSize(1280, 720), QImage::Format_RGB888, 2));
    verify(u"image under a crop"_s);
    scene.label = followLabel;
    widget->setSourceCrop(scene.crop, scene.label);
    verify(u"label"_s);
    widget->resize(size = QSize(501, 377));
    verify(u"size"_s);
    scene.crop = QRect();
    widget->setSourceCrop(scene.crop, scene.label);
    verify(u"no crop"_s);
    widget->setImage(scene.image = testImage(QSize(333, 777)));
    verify(u"image of another size"_s);
    widget->setOverlays(scene.overlays = {});
    verify(u"no overlays"_s);
}

void StreamImageWidgetTest::theSendersBufferMayChange() {
    std::vector<uchar> buffer(320 * 180 * 3, uchar(0x30));
    const QImage outside(buffer.data(), 320, 180, 320 * 3, QImage::Format_RGB888);
    StreamScene scene;
    scene.image = outside;
    const auto widget = widgetOf(scene, QSize(640, 360));
    std::fill(buffer.begin(), buffer.end(), uchar(0xd0));
    QCOMPARE(shot(*widget).pixelColor(320, 180), QColor(0x30, 0x30, 0x30));

    // For Qt it is still the same image, with the same cache key.
    widget->setImage(outside);
    QCOMPARE(shot(*widget).pixelColor(320, 180), QColor(0xd0, 0xd0, 0xd0));
    std::fill(buffer.begin(), buffer.end(), uchar(0x50));
    QCOMPARE(shot(*widget).pixelColor(320, 180), QColor(0xd0, 0xd0, 0xd0));
}

void StreamImageWidgetTest::anOpaqueGroundIsLeftUnderATranslucentImage() {
    StreamScene scene;
    scene.image = QImage(100, 100, QImage::Format_ARGB32);
    scene.image.fill(Qt::transparent);
    QCOMPARE(paint(scene, QSize(112, 112)).pixelColor(50, 50), QColor(7, 11, 16));
}

void StreamImageWidgetTest::formatsOtherThanTheSensorsAreShown_data() {
    QTest::addColumn<QImage::Format>("format");
    QTest::newRow("RGB32") << QImage::Format_RGB32;
    QTest::newRow("BGR888") << QImage::Format_BGR888;
    QTest::newRow("grey") << QImage::Format_Grayscale8;
    QTest::newRow("16-bit grey") << QImage::Format_Grayscale16;
    QTest::newRow("indexed") << QImage::Format_Indexed8;
    QTest::newRow("RGBX") << QImage::Format_RGBX8888;
    QTest::newRow("bits") << QImage::Format_Mono;
}

void StreamImageWidgetTest::formatsOtherThanTheSensorsAreShown() {
    QFETCH(QImage::Format, format);
    StreamScene scene;
    scene.image = testImage(QSize(203, 101), format);
    scene.crop = QRect(3, 5, 150, 80);
    const QString difference = differenceFromPlain(scene, QSize(640, 360));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void StreamImageWidgetTest::aFrameIsSharedByTiles() {
    const StreamScene scene = sceneWithImage();
    const StreamFrame frame(scene.image);
    StreamScene empty;
    const auto large = widgetOf(empty, QSize(640, 360));
    const auto small = widgetOf(empty, QSize(200, 150));
    large->setFrame(frame);
    small->setFrame(frame.cropped(QRect(100, 100, 300, 200)));
    QCOMPARE(shot(*large), paint(scene, QSize(640, 360)));
    StreamScene cropped;
    cropped.image = scene.image.copy(100, 100, 300, 200);
    QCOMPARE(shot(*small), paint(cropped, QSize(200, 150)));
}

void StreamImageWidgetTest::severalSettersCostOnePainting() {
    const auto widget = widgetOf(StreamScene(), QSize(320, 200));
    widget->show();
    QVERIFY(QTest::qWaitForWindowExposed(widget.get()));
    PaintCounter counter(widget.get());
    widget->setImage(testImage(QSize(64, 48)));
    widget->setOverlays({box(QRect(1, 1, 20, 20))});
    widget->setVoiceStatus(direction(0.0));
    widget->setSourceCrop(QRect(0, 0, 30, 30), u"crop"_s);
    widget->setPlaceholder(u"other"_s);
    QCOMPARE(counter.count, 0);
    QTRY_COMPARE(counter.count, 1);
    QCoreApplication::processEvents();
    QCOMPARE(counter.count, 1);
}

void StreamImageWidgetTest::eachSetterAloneGivesOnePainting_data() {
    QTest::addColumn<std::function<void(StreamImageWidget&)>>("set");
    using Set = std::function<void(StreamImageWidget&)>;
    QTest::newRow("image") << Set([](auto& tile) { tile.setImage(testImage(QSize(64, 48))); });
    QTest::newRow("placeholder") << Set([](auto& tile) { tile.setPlaceholder(u"other"_s); });
    QTest::newRow("overlays") << Set([](auto& tile) { tile.setOverlays(overlaysOfEveryKind()); });
    QTest::newRow("voice") << Set([](auto& tile) { tile.setVoiceStatus(direction(5.0)); });
    QTest::newRow("crop") << Set([](auto& tile) { tile.setSourceCrop(QRect(), u"crop"_s); });
}

void StreamImageWidgetTest::eachSetterAloneGivesOnePainting() {
    QFETCH(std::function<void(StreamImageWidget&)>, set);
    const auto widget = widgetOf(sceneWithImage(), QSize(320, 240));
    widget->show();
    QVERIFY(QTest::qWaitForWindowExposed(widget.get()));
    QCoreApplication::processEvents();
    const PaintCounter counter(widget.get());
    set(*widget);
    QTRY_COMPARE(counter.count, 1);
    QCoreApplication::processEvents();
    QCOMPARE(counter.count, 1);
}

void StreamImageWidgetTest::anOverlayWithNoFieldSetIsSolidAndBlack() {
    StreamScene scene;
    scene.image = QImage(QSize(400, 300), QImage::Format_RGB32);
    scene.image.fill(Qt::white);
    FaceOverlay overlay;
    overlay.rect = QRect(100, 100, 120, 80);
    scene.overlays = {overlay};
    const QImage painted = paint(scene, QSize(412, 312)); // the picture at its own size, from 6,6
    // Solid, that is without a gap, and three pixels wide: the edge's own and one on each side.
    for (int x = 120; x < 210; ++x) {
        for (int y = 185; y <= 187; ++y)
            QCOMPARE(painted.pixelColor(x, y), QColor(Qt::black));
        QCOMPARE(painted.pixelColor(x, 184), QColor(Qt::white));
        QCOMPARE(painted.pixelColor(x, 188), QColor(Qt::white));
    }
    // Its caption is the tier alone, behind the name that it does not have.
    FaceOverlay named = overlay;
    named.label = u" • near"_s;
    named.tier.clear();
    scene.overlays = {named};
    QCOMPARE(paint(scene, QSize(412, 312)), painted);
}

void StreamImageWidgetTest::anUncertainLightHasItsOwnOutline() {
    StreamScene scene = sceneWithImage();
    scene.showVoice = true;
    const QSize size(640, 360);
    const QRect light = streamGeometry::speakerLight(3, size);
    const auto outlineOf = [&](const VoiceDirectionStatus& voice) {
        scene.voice = voice;
        return paint(scene, size).pixelColor(light.center().x(), light.top());
    };
    QCOMPARE(outlineOf(direction(5.0, false, true)), QColor(150, 158, 170));
    QCOMPARE(outlineOf(direction(5.0, false, false)), QColor(205, 255, 220));
    QCOMPARE(outlineOf(direction(-60.0)), QColor(78, 91, 108));
}

void StreamImageWidgetTest::aBannerIsHighlightedWhereverTheWordsStand() {
    const auto outlineOf = [](const QString& label) {
        StreamScene scene = sceneWithImage();
        scene.label = label;
        return paint(scene, QSize(640, 360)).pixelColor(300, 8);
    };
    const QColor highlighted(91, 232, 134);
    QCOMPARE(outlineOf(u"VISIBLE FOLLOW ZOOM ACTIVE | x"_s), highlighted);
    QCOMPARE(outlineOf(u"x | VISIBLE FOLLOW ZOOM ACTIVE"_s), highlighted);
    QVERIFY(outlineOf(u"x | visible follow zoom active"_s) != highlighted);
}

void StreamImageWidgetTest::aPlaceholderWithALineBreakIsOneLine() {
    StreamScene broken;
    broken.placeholder = u"Kinect unavailable:\n\nno device"_s;
    StreamScene whole;
    whole.placeholder = u"Kinect unavailable: no device"_s;
    QCOMPARE(paint(broken, QSize(640, 360)), paint(whole, QSize(640, 360)));
}

void StreamImageWidgetTest::aHiddenTileDoesNoWork() {
    QStackedWidget pages;
    auto* hidden = new StreamImageWidget(u"hidden"_s, false);
    auto* shown = new StreamImageWidget(u"shown"_s, false);
    pages.addWidget(shown);
    pages.addWidget(hidden);
    pages.resize(320, 200);
    pages.show();
    QVERIFY(QTest::qWaitForWindowExposed(&pages));
    PaintCounter shownCounter(shown);
    PaintCounter hiddenCounter(hidden);
    const StreamScene scene = sceneWithImage();
    const StreamFrame frame(scene.image);
    shown->setFrame(frame);
    hidden->setFrame(frame);
    QTRY_COMPARE(shownCounter.count, 1);
    QCOMPARE(hiddenCounter.count, 0);

    pages.setCurrentWidget(hidden);
    QTRY_VERIFY(hiddenCounter.count > 0);
    QCOMPARE(shot(*hidden), paint(scene, QSize(320, 200)));
}

void StreamImageWidgetTest::nothingBelowATileIsPaintedWithIt() {
    QWidget page;
    page.setStyleSheet(applicationStyleSheet());
    page.resize(400, 300);
    StreamImageWidget tile(u"waiting"_s, false, &page);
    tile.setGeometry(20, 20, 320, 200);
    page.show();
    QVERIFY(QTest::qWaitForWindowExposed(&page));
    PaintCounter pageCounter(&page);
    PaintCounter tileCounter(&tile);
    tile.setImage(testImage(QSize(64, 48)));
    QTRY_COMPARE(tileCounter.count, 1);
    QCOMPARE(pageCounter.count, 0);
}

void StreamImageWidgetTest::aTextWithLineBreaksIsOneLine() {
    StreamScene broken = sceneWithImage();
    broken.showVoice = true;
    broken.overlays = {box(QRect(100, 100, 300, 300), u"first\nsecond"_s)};
    broken.label = u"first\r\nsecond"_s;
    broken.voice.reason = QString::fromUtf16(u"first\0second", 12);
    StreamScene plain = broken;
    plain.overlays[0].label = u"first second"_s;
    plain.label = u"first second"_s;
    plain.voice.reason = u"first second"_s;
    QCOMPARE(paint(broken, QSize(640, 360)), paint(plain, QSize(640, 360)));
}

QTEST_MAIN(StreamImageWidgetTest)

#include "stream_image_widget_test.moc"
