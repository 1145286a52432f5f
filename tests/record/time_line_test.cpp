#include "record/time_line.h"

#include <QTest>

using record::TimeLine;

class TimeLineTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void timesCountFromTheFirstStamp();
    void timesGoOnWhereTheStampsBeginAgain();
    void aStampThatDoesNotRiseBecomesOneFrameLater_data();
    void aStampThatDoesNotRiseBecomesOneFrameLater();
    void framesBesideMayComeBeforeAndAfter();
};

void TimeLineTest::timesCountFromTheFirstStamp() {
    TimeLine line;
    QCOMPARE(line.advance(5000), 0);
    QCOMPARE(line.advance(5267), 267);
    QCOMPARE(line.advance(13000), 8000);
    QCOMPARE(line.repaired(), 0);
}

void TimeLineTest::timesGoOnWhereTheStampsBeginAgain() {
    TimeLine line;
    QCOMPARE(line.advance(0xffffff00U), 0);
    QCOMPARE(line.advance(0x10), 0x110);
    QCOMPARE(line.repaired(), 0);
}

void TimeLineTest::aStampThatDoesNotRiseBecomesOneFrameLater_data() {
    QTest::addColumn<quint32>("stamp");
    QTest::newRow("the same") << quint32{1000};
    QTest::newRow("a little before") << quint32{999};
    QTest::newRow("the clock began anew") << quint32{3};
}

void TimeLineTest::aStampThatDoesNotRiseBecomesOneFrameLater() {
    QFETCH(quint32, stamp);
    TimeLine line;
    line.advance(600);
    QCOMPARE(line.advance(1000), 400);
    QCOMPARE(line.advance(stamp), 400 + 267);
    QCOMPARE(line.repaired(), 1);
    // From there the new clock counts.
    QCOMPARE(line.advance(stamp + 300), 400 + 267 + 300);
    QCOMPARE(line.repaired(), 1);
}

void TimeLineTest::framesBesideMayComeBeforeAndAfter() {
    TimeLine line;
    line.advance(1000);
    line.advance(2000);
    QCOMPARE(line.beside(1990), 990);
    QCOMPARE(line.beside(2267), 1267);
    QCOMPARE(line.repaired(), 0);
}

QTEST_APPLESS_MAIN(TimeLineTest)
#include "time_line_test.moc"
