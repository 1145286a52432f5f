#include "awareness/body_candidates.h"
#include "awareness/plain_body_candidates.h"
#include "support/shared_pictures.h"

#include <QImage>
#include <QTest>

using namespace Qt::StringLiterals;

/// Real depth frames: what is found in them, and which gate every other large blob fails.
class RecordingsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatIsFoundInRealFrames_data();
    void whatIsFoundInRealFrames();
};

namespace {

struct Recording {
    QList<float> depth_mm;
    QSize depth;
    QSize color;
};

Recording load(const QString& depthPath, const QString& colorPath) {
    const QImage depth = QImage(depthPath).convertToFormat(QImage::Format_Grayscale16);
    Recording recording{{}, depth.size(), QImage(colorPath).size()};
    for (int y = 0; y < depth.height(); ++y) {
        const auto* line = reinterpret_cast<const quint16*>(depth.constScanLine(y));
        for (int x = 0; x < depth.width(); ++x)
            recording.depth_mm.append(float(line[x]));
    }
    return recording;
}

QString gateText(BodyGate gate) {
    switch (gate) {
    case BodyGate::Passed:
        return u"passed"_s;
    case BodyGate::Cells:
        return u"cells"_s;
    case BodyGate::Upright:
        return u"upright"_s;
    case BodyGate::Fill:
        return u"fill"_s;
    case BodyGate::Width:
        return u"width"_s;
    case BodyGate::Height:
        return u"height"_s;
    }
    return {};
}

/// Every blob of the frame that is large enough to be a person, in the order of the scan.
QStringList largeBlobs(const Recording& recording) {
    const QSize grid = recording.depth / 4;
    QStringList blobs;
    plain::Search search(recording.depth_mm, recording.depth.width(), recording.depth.height());
    for (const plain::Blob& found : search.blobs()) {
        if (found.cells < 45)
            continue;
        const CellBlob blob{QRect(QPoint(found.minX, found.minY), QPoint(found.maxX, found.maxY)),
                            found.cells};
        blobs.append(u"%1 cells, %2x%3 at %4,%5: %6"_s.arg(blob.cells)
                         .arg(blob.cellBox.width())
                         .arg(blob.cellBox.height())
                         .arg(blob.cellBox.left())
                         .arg(blob.cellBox.top())
                         .arg(gateText(failedBodyGate(blob, grid))));
    }
    return blobs;
}

QStringList boxes(const QList<BodyCandidate>& candidates) {
    QStringList texts;
    for (const BodyCandidate& c : candidates)
        texts.append(u"%1,%2 %3x%4 %5m"_s.arg(c.rect.x())
                         .arg(c.rect.y())
                         .arg(c.rect.width())
                         .arg(c.rect.height())
                         .arg(c.distance_m, 0, 'f', 2));
    return texts;
}

} // namespace

void RecordingsTest::whatIsFoundInRealFrames_data() {
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QStringList>("candidates");
    QTest::addColumn<QStringList>("blobs");
    // Five people who touch each other and the floor are one blob, and so is a furnished room: both
    // are wider than they are tall (and wider than a person may be). Nobody is an honest answer.
    QTest::newRow("five people") << u"recordings/five-people/"_s << QStringList()
                                 << QStringList(u"5819 cells, 103x79 at 12,16: upright"_s);
    QTest::newRow("empty living room") << u"recordings/empty-living-room/"_s << QStringList()
                                       << QStringList(u"12066 cells, 127x106 at 0,0: upright"_s);
}

void RecordingsTest::whatIsFoundInRealFrames() {
    QFETCH(QString, folder);
    const QString depth = sharedPicture(folder + u"depth/000000.png"_s);
    const QString color = sharedPicture(folder + u"color/000000.png"_s);
    if (depth.isEmpty() || color.isEmpty())
        QSKIP("the real frames are not here");
    const Recording recording = load(depth, color);
    QCOMPARE(recording.depth, QSize(512, 424));
    const QList<BodyCandidate> found =
        detectDepthBodyCandidates({recording.depth_mm, 512, 424}, recording.color);
    QTEST(boxes(found), "candidates");
    QTEST(largeBlobs(recording), "blobs");
    QCOMPARE(boxes(found),
             boxes(plain::bodyCandidates(recording.depth_mm, 512, 424, recording.color)));
}

QTEST_APPLESS_MAIN(RecordingsTest)
#include "recordings_test.moc"
