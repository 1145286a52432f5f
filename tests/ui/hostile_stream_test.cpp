#include "support/log_capture.h"
#include "ui/stream_scenes.h"

#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

/// A tile paints to its end whatever boxes, numbers, texts and sizes it is given.
class HostileStreamTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void hostileValuesArePainted_data();
    void hostileValuesArePainted();
    void everyTinySizeIsPainted();
};

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

} // namespace

void HostileStreamTest::hostileValuesArePainted_data() {
    QTest::addColumn<StreamScene>("scene");
    constexpr int min = std::numeric_limits<int>::min();
    constexpr int max = std::numeric_limits<int>::max();
    const QList<QRect> rects{QRect(QPoint(min, min), QPoint(max, max)),
                             QRect(QPoint(max, max), QPoint(min, min)),
                             QRect(QPoint(min, 0), QPoint(min, max)),
                             QRect(QPoint(0, 0), QPoint(max, max)),
                             QRect(QPoint(max - 1, 5), QPoint(max, 9)),
                             QRect(QPoint(300, 300), QPoint(100, 100)),
                             QRect()};
    const QList<double> doubles{notANumber, infinite, -infinite, 1e308, -1e308, 4.9e-324};
    const QList<QString> texts{u"x"_s.repeated(3'000'000),
                               u"\u202e\u202e"_s + u"שלום "_s.repeated(1000),
                               u"a\u0301\u0301\u0301"_s.repeated(500),
                               QString(1000, QChar(0)),
                               u"\n"_s.repeated(100000),
                               QString(300, QChar(0xd800)),
                               u"%1 %2 %99 %n"_s,
                               u"<b>&amp;&x</b>"_s,
                               u"👩\u200d🚀"_s.repeated(400)};
    for (qsizetype index = 0; index < texts.size(); ++index) {
        StreamScene scene = sceneWithImage();
        scene.showVoice = true;
        scene.placeholder = scene.label = texts[index];
        scene.voice = direction(doubles[index % doubles.size()]);
        scene.voice.reason = texts[index];
        scene.voice.fresh = index % 2 == 0;
        scene.voice.confidence = doubles[index % doubles.size()];
        scene.crop = rects[index % rects.size()];
        for (const QRect& rect : rects) {
            FaceOverlay overlay = box(rect, texts[index]);
            overlay.tier = overlay.speakerNote = overlay.status = texts[index];
            overlay.stale = true;
            overlay.hasDistance = true;
            overlay.confidence = overlay.distanceMeters = doubles[index % doubles.size()];
            scene.overlays.append(overlay);
        }
        QTest::addRow("text %d", int(index)) << scene;
    }
}

void HostileStreamTest::hostileValuesArePainted() {
    QFETCH(StreamScene, scene);
    const LogCapture log;
    const QImage painted = paint(scene, QSize(640, 360));
    QVERIFY(painted.pixelColor(320, 0) == QColor(52, 66, 84)); // reached its end
    scene.image = QImage();
    QVERIFY(paint(scene, QSize(640, 360)).pixelColor(320, 0) == QColor(52, 66, 84));
    QCOMPARE(log.warnings(), QStringList());
}

void HostileStreamTest::everyTinySizeIsPainted() {
    StreamScene scene = sceneWithImage(QSize(40, 30));
    scene.overlays = {box(QRect(0, 0, 20, 20))};
    scene.label = u"VISIBLE FOLLOW ZOOM ACTIVE | current view: FOLLOW"_s;
    scene.showVoice = true;
    const LogCapture log;
    for (int width = 1; width < 40; ++width) {
        for (const int height : {1, 11, 12, 13, 40, 200}) {
            const QImage painted = paint(scene, QSize(width, height));
            QVERIFY(painted.pixelColor(width / 2, height / 2) != QColor(Qt::magenta));
        }
    }
    QCOMPARE(log.warnings(), QStringList());
}

QTEST_MAIN(HostileStreamTest)

#include "hostile_stream_test.moc"
