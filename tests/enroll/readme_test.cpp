#include "awareness/body_candidates.h"
#include "enroll/distances.h"
#include "face/face_options.h"

#include <QFile>
#include <QTest>
#include <cmath>

using namespace enroll;
using namespace Qt::StringLiterals;

namespace {

QString meters(double value) {
    return QString::number(value, 'f', 1);
}

/// Whether a standing person is found when every part of the body is that far away.
bool findsBodyAt(int depth_mm) {
    DepthFrame depth{QList<float>(512 * 424, 0.0F), 512, 424};
    for (int y = 100; y < 340; ++y)
        for (int x = 200; x < 312; ++x)
            if (std::hypot((x - 256) / 50.0, (y - 220) / 115.0) < 1.0)
                depth.depth_mm[y * 512 + x] = float(depth_mm);
    return !detectDepthBodyCandidates(depth, QSize(1920, 1080)).isEmpty();
}

QString metersOf(Distance distance) {
    const SideRange sides = sidesOf(distance);
    return meters(metersForSide(sides.most)) + u" to "_s + meters(metersForSide(sides.least)) +
           u" m"_s;
}

} // namespace

/// The README's table of what works at which distance, held against the constants.
class ReadmeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void theTableOfDistances_data();
    void theTableOfDistances();
    void everyCommandIsNamed_data();
    void everyCommandIsNamed();

private:
    QString readme;
};

void ReadmeTest::initTestCase() {
    QFile file(QStringLiteral(LUMENO_README));
    QVERIFY(file.open(QIODevice::ReadOnly));
    readme = QString::fromUtf8(file.readAll());
}

void ReadmeTest::theTableOfDistances_data() {
    QTest::addColumn<QString>("row");
    const face::Options options;
    QTest::newRow("recognition")
        << u"| up to %1 m | the owner is told from strangers: the face's box has %2 pixels or more |"_s
               .arg(meters(metersForSide(options.minQualityFaceSize)))
               .arg(options.minQualityFaceSize);
    QTest::newRow("enrolment") << u"| %1, %2, %3 | the near, the middle and the far stations of "
                                  "the enrolment |"_s.arg(metersOf(Distance::Near),
                                                          metersOf(Distance::Middle),
                                                          metersOf(Distance::Far));
    int nearest_mm = 500;
    while (!findsBodyAt(nearest_mm) && nearest_mm < 8000)
        nearest_mm += 50;
    int farthest_mm = nearest_mm;
    while (findsBodyAt(farthest_mm + 50))
        farthest_mm += 50;
    QTest::newRow("bodies") << u"| %1 to %2 m | standing people are found and tracked as bodies |"_s
                                   .arg(meters(nearest_mm / 1000.0), meters(farthest_mm / 1000.0));
    QTest::newRow("faces")
        << u"| up to %1 m | faces are found, %2 pixels and more, without a name |"_s
               .arg(meters(metersForSide(options.minFaceSize)))
               .arg(options.minFaceSize);
}

void ReadmeTest::theTableOfDistances() {
    QFETCH(QString, row);
    QVERIFY2(readme.contains(row + u'\n'), qPrintable(row));
}

void ReadmeTest::everyCommandIsNamed_data() {
    QTest::addColumn<QString>("command");
    for (const char* command : {"take", "import", "check", "why", "strangers", "set-aside"})
        QTest::newRow(command) << u"| `lumeno-enroll "_s + QLatin1StringView(command);
}

void ReadmeTest::everyCommandIsNamed() {
    QFETCH(QString, command);
    QVERIFY(readme.contains(command));
}

QTEST_APPLESS_MAIN(ReadmeTest)
#include "readme_test.moc"
