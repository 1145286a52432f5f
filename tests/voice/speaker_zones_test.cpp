#include "voice/speaker_zones.h"

#include <QTest>

#include <limits>

class SpeakerZonesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anglesFallIntoSixZones_data();
    void anglesFallIntoSixZones();
    void placesFallIntoSixZones_data();
    void placesFallIntoSixZones();
    void whatIsNoNumberIsInNoZone();
};

void SpeakerZonesTest::anglesFallIntoSixZones_data() {
    QTest::addColumn<double>("degrees");
    QTest::addColumn<int>("zone");
    QTest::newRow("-60") << -60.0 << 0;
    QTest::newRow("far left") << -500.0 << 0;
    QTest::newRow("-40.01") << -40.01 << 0;
    QTest::newRow("-40") << -40.0 << 1;
    QTest::newRow("0") << 0.0 << 3;
    QTest::newRow("-0.01") << -0.01 << 2;
    QTest::newRow("39.99") << 39.99 << 4;
    QTest::newRow("59") << 59.0 << 5;
    QTest::newRow("60") << 60.0 << 5;
    QTest::newRow("far right") << 1e308 << 5;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << 5;
}

void SpeakerZonesTest::anglesFallIntoSixZones() {
    QFETCH(double, degrees);
    QFETCH(int, zone);
    QCOMPARE(speakerZones::ofVoice(degrees, false), std::optional(zone));
    QCOMPARE(speakerZones::ofVoice(degrees, true), std::optional(5 - zone));
}

void SpeakerZonesTest::placesFallIntoSixZones_data() {
    QTest::addColumn<double>("position");
    QTest::addColumn<int>("zone");
    QTest::newRow("left of the view") << -0.001 << 0;
    QTest::newRow("left edge") << 0.0 << 0;
    QTest::newRow("end of the first zone") << 0.166 << 0;
    QTest::newRow("second zone") << 0.167 << 1;
    QTest::newRow("0.5") << 0.5 << 3;
    QTest::newRow("0.999") << 0.999 << 5;
    QTest::newRow("right edge") << 1.0 << 5;
    QTest::newRow("right of the view") << 1e300 << 5;
}

void SpeakerZonesTest::placesFallIntoSixZones() {
    QFETCH(double, position);
    QFETCH(int, zone);
    QCOMPARE(speakerZones::ofPosition(position), std::optional(zone));
}

void SpeakerZonesTest::whatIsNoNumberIsInNoZone() {
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    QVERIFY(!speakerZones::ofPosition(notANumber));
    QVERIFY(!speakerZones::ofVoice(notANumber, false));
    QVERIFY(!speakerZones::ofVoice(notANumber, true));
}

QTEST_APPLESS_MAIN(SpeakerZonesTest)
#include "speaker_zones_test.moc"
