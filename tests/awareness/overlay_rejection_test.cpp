#include "awareness/awareness_report.h"
#include "awareness/overlay_rejection.h"
#include "awareness/overlays.h"

#include <QTest>

using namespace Qt::StringLiterals;

class OverlayRejectionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void photographsAndBackgroundFacesGo_data();
    void photographsAndBackgroundFacesGo();
    void linesTellWhatWentAndWhy();
    void labelsAreNoTemplates();
    void duplicatesOfTheOwnerGo_data();
    void duplicatesOfTheOwnerGo();
    void anUnmeasuredOwnerHasNoDuplicateByDistance();
    void withoutTheOwnerNothingIsADuplicate();
    void everyOwnerOverlayIsComparedWith();
};

namespace {

const QRect place(100, 200, 90, 110);

FaceOverlay photograph(const QString& label) {
    FaceOverlay overlay = overlays::face(label, place);
    overlay.depthMissing = true;
    return overlay;
}

/// Drops what is to be dropped and returns the log's descriptions of it.
QStringList rejectedLines(QList<FaceOverlay>& list, int imageWidth) {
    QStringList lines;
    for (const Rejection& rejection : rejectOverlays(list, imageWidth))
        lines.append(rejectionDescription(rejection));
    return lines;
}

} // namespace

void OverlayRejectionTest::photographsAndBackgroundFacesGo_data() {
    QTest::addColumn<FaceOverlay>("overlay");
    QTest::addColumn<bool>("kept");
    QTest::newRow("unknown without depth") << photograph(identity::unknown) << false;
    QTest::newRow("somebody without depth") << photograph(u"Somebody"_s) << false;
    QTest::newRow("owner without depth") << photograph(identity::owner) << true;
    FaceOverlay bodyWithoutDepth = overlays::body(identity::person, place, 2.0);
    bodyWithoutDepth.hasDistance = false;
    bodyWithoutDepth.depthMissing = true;
    QTest::newRow("body without depth") << bodyWithoutDepth << true;
    FaceOverlay measuredAfterAll = overlays::faceAt(identity::unknown, place, 2.0);
    measuredAfterAll.depthMissing = true;
    QTest::newRow("a known distance counts") << measuredAfterAll << true;
    QTest::newRow("unknown not measured") << overlays::face(identity::unknown, place) << true;
    QTest::newRow("unknown at 2.2 m") << overlays::faceAt(identity::unknown, place, 2.2) << true;
    QTest::newRow("unknown at 2.3 m") << overlays::faceAt(identity::unknown, place, 2.3) << false;
    QTest::newRow("owner at 5 m") << overlays::faceAt(identity::owner, place, 5.0) << true;
    QTest::newRow("body at 3 m") << overlays::body(identity::unknown, place, 3.0) << true;
}

void OverlayRejectionTest::photographsAndBackgroundFacesGo() {
    QFETCH(FaceOverlay, overlay);
    QFETCH(bool, kept);
    QList<FaceOverlay> list{overlay};
    const QStringList lines = rejectedLines(list, 1920);
    QCOMPARE(list.size(), kept ? 1 : 0);
    QCOMPARE(lines.size(), kept ? 0 : 1);
}

void OverlayRejectionTest::linesTellWhatWentAndWhy() {
    QList<FaceOverlay> list{photograph(identity::unknown),
                            overlays::faceAt(identity::unknown, place, 2.345),
                            overlays::faceAt(identity::owner, QRect(900, 200, 100, 100), 2.0),
                            overlays::body(identity::person, QRect(880, 300, 200, 600), 2.0)};
    const QStringList lines = rejectedLines(list, 1920);
    QCOMPARE(list.size(), 1);
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines[0], u"reject Unknown box=100,200 90x110 distance=none "
                       "reason=no valid depth/photo-like"_s);
    QCOMPARE(lines[1], u"reject Unknown box=100,200 90x110 distance=2.35m "
                       "reason=far face without body evidence"_s);
    QCOMPARE(lines[2], u"reject Person box=880,300 200x600 reason=duplicate near Tavin"_s);
}

void OverlayRejectionTest::labelsAreNoTemplates() {
    QList<FaceOverlay> list{photograph(u"%2 %1"_s)};
    QCOMPARE(rejectedLines(list, 1920).value(0),
             u"reject %2 %1 box=100,200 90x110 distance=none reason=no valid depth/photo-like"_s);
}

void OverlayRejectionTest::duplicatesOfTheOwnerGo_data() {
    QTest::addColumn<FaceOverlay>("overlay");
    QTest::addColumn<bool>("kept");
    // The owner's box is 900 … 999 at 2.0 m in an image of 1000 pixels; 0.28 of it is 280.
    const auto beside = [](int offset, double distance_m) {
        return overlays::faceAt(identity::unknown, QRect(900 + offset, 700, 100, 100), distance_m);
    };
    QTest::newRow("280 pixels beside") << beside(-280, 2.0) << false;
    QTest::newRow("281 pixels beside") << beside(-281, 2.0) << true;
    QTest::newRow("0.45 m nearer") << beside(-100, 1.55) << false;
    QTest::newRow("0.46 m nearer") << beside(-100, 1.54) << true;
    FaceOverlay unmeasured = beside(-100, 2.0);
    unmeasured.hasDistance = false; // so that its distance means nothing
    QTest::newRow("at an unknown distance") << unmeasured << true;
    // Enlarged by half the owner reaches from 850 to 1049 and from 150 to 349.
    const auto touching = [](const QRect& rect) { return overlays::face(identity::person, rect); };
    QTest::newRow("touches the left") << touching(QRect(QPoint(0, 200), QPoint(850, 210))) << false;
    QTest::newRow("left of it") << touching(QRect(QPoint(0, 200), QPoint(849, 210))) << true;
    QTest::newRow("touches below") << touching(QRect(900, 349, 10, 10)) << false;
    QTest::newRow("below it") << touching(QRect(900, 350, 10, 10)) << true;
    QTest::newRow("another owner")
        << overlays::face(identity::owner, QRect(910, 200, 100, 100)) << true;
}

void OverlayRejectionTest::duplicatesOfTheOwnerGo() {
    QFETCH(FaceOverlay, overlay);
    QFETCH(bool, kept);
    QList<FaceOverlay> list{overlay,
                            overlays::faceAt(identity::owner, QRect(900, 200, 100, 100), 2.0)};
    const QStringList lines = rejectedLines(list, 1000);
    QCOMPARE(list.size(), kept ? 2 : 1);
    QCOMPARE(lines.size(), kept ? 0 : 1);
}

void OverlayRejectionTest::anUnmeasuredOwnerHasNoDuplicateByDistance() {
    FaceOverlay owner = overlays::faceAt(identity::owner, QRect(900, 200, 100, 100), 2.0);
    const FaceOverlay beside = overlays::faceAt(identity::unknown, QRect(800, 700, 100, 100), 2.0);
    QList<FaceOverlay> list{beside, owner};
    QCOMPARE(rejectOverlays(list, 1000).size(), 1);
    owner.hasDistance = false;
    list = {beside, owner};
    QVERIFY(rejectOverlays(list, 1000).isEmpty());
}

void OverlayRejectionTest::withoutTheOwnerNothingIsADuplicate() {
    QList<FaceOverlay> list{overlays::faceAt(identity::unknown, place, 2.0),
                            overlays::body(identity::person, place, 2.0),
                            overlays::body(identity::possibleOwner, place, 2.0)};
    QVERIFY(rejectedLines(list, 1920).isEmpty());
    QCOMPARE(list.size(), 3);
}

void OverlayRejectionTest::everyOwnerOverlayIsComparedWith() {
    QList<FaceOverlay> list{overlays::face(identity::owner, QRect(0, 0, 100, 100)),
                            overlays::face(identity::owner, QRect(1500, 0, 100, 100)),
                            overlays::face(identity::unknown, QRect(1520, 10, 80, 80))};
    QCOMPARE(rejectedLines(list, 1920).size(), 1);
    QCOMPARE(list.size(), 2);
}

QTEST_APPLESS_MAIN(OverlayRejectionTest)
#include "overlay_rejection_test.moc"
