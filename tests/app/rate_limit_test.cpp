#include "app/rate_limit.h"

#include <QTest>

/// What happens at most once in an interval.
class RateLimitTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theFirstTimeIsAllowedWheneverItIs_data();
    void theFirstTimeIsAllowedWheneverItIs();
    void theNextTimeIsAnIntervalLater();
    void whatWasRefusedDoesNotCount();
    void theIntervalIsASecondUnlessSaidOtherwise();
    void startedItWaitsForAnInterval();
};

void RateLimitTest::theFirstTimeIsAllowedWheneverItIs_data() {
    QTest::addColumn<qint64>("now");
    QTest::newRow("at zero") << qint64(0);
    QTest::newRow("by the wall clock") << qint64(1'700'000'000'000);
    QTest::newRow("before zero") << qint64(-5);
}

void RateLimitTest::theFirstTimeIsAllowedWheneverItIs() {
    QFETCH(qint64, now);
    RateLimit limit;
    QVERIFY(limit.allows(now));
    QVERIFY(!limit.allows(now));
}

void RateLimitTest::theNextTimeIsAnIntervalLater() {
    RateLimit limit(250);
    QVERIFY(limit.allows(5000));
    QVERIFY(!limit.allows(5249));
    QVERIFY(limit.allows(5250));
    QVERIFY(!limit.allows(5499));
    QVERIFY(limit.allows(9000));
}

void RateLimitTest::whatWasRefusedDoesNotCount() {
    RateLimit limit(250);
    QVERIFY(limit.allows(0));
    QVERIFY(!limit.allows(200));
    QVERIFY(limit.allows(250));
}

void RateLimitTest::theIntervalIsASecondUnlessSaidOtherwise() {
    RateLimit limit;
    QVERIFY(limit.allows(0));
    QVERIFY(!limit.allows(999));
    QVERIFY(limit.allows(1000));
}

void RateLimitTest::startedItWaitsForAnInterval() {
    RateLimit limit;
    limit.startAt(500);
    limit.startAt(900); // has started already
    QVERIFY(!limit.allows(1499));
    QVERIFY(limit.allows(1500));
}

QTEST_APPLESS_MAIN(RateLimitTest)
#include "rate_limit_test.moc"
