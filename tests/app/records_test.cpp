#include "app/face_overlay.h"
#include "app/record_types.h"
#include "app/voice_direction_status.h"

#include <QCoreApplication>
#include <QMetaType>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

/// Sends records as the workers do: by queued signals to another thread.
class RecordSender : public QObject {
    Q_OBJECT

Q_SIGNALS:
    void voiceRead(const VoiceDirectionStatus& status);
    void overlaysReady(const QList<FaceOverlay>& overlays);
    void depthRawReady(const QList<float>& depth_mm);
};

class RecordsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void aNewOverlayIsANearFace();
    void aNewVoiceStatusMeansNoData();
    void typesAreRegisteredUnderTheirNames_data();
    void typesAreRegisteredUnderTheirNames();
    void recordsCrossThreadsUnchanged();
};

void RecordsTest::initTestCase() {
    registerRecordTypes();
}

void RecordsTest::aNewOverlayIsANearFace() {
    const FaceOverlay overlay;
    QVERIFY(overlay.rect.isNull());
    QVERIFY(!overlay.color.isValid());
    QCOMPARE(overlay.confidence, 0.0);
    QCOMPARE(overlay.distanceMeters, 0.0);
    QVERIFY(!overlay.stale && !overlay.hasDistance && !overlay.depthMissing && !overlay.bodyOnly);
    QVERIFY(overlay.faceEvidence);
    QCOMPARE(overlay.tier, u"near"_s);
    QVERIFY(
        (overlay.label + overlay.detector + overlay.status + overlay.speakerNote + overlay.reason)
            .isEmpty());
}

void RecordsTest::aNewVoiceStatusMeansNoData() {
    const VoiceDirectionStatus status;
    QVERIFY(status.lowConfidence);
    QVERIFY(!status.running && !status.hasDirection && !status.fresh && !status.inverted);
    QCOMPARE(status.angleDegrees, 0.0);
    QCOMPARE(status.confidence, 0.0);
    QCOMPARE(status.eventTimeMs, 0);
    QVERIFY(status.source.isEmpty());
    QCOMPARE(status.reason, u"Auralis direction event unavailable"_s);
}

void RecordsTest::typesAreRegisteredUnderTheirNames_data() {
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QMetaType>("type");
    QTest::newRow("depth") << "QVector<float>"_ba << QMetaType::fromType<QList<float>>();
    QTest::newRow("overlays") << "QVector<FaceOverlay>"_ba
                              << QMetaType::fromType<QList<FaceOverlay>>();
    QTest::newRow("voice") << "VoiceDirectionStatus"_ba
                           << QMetaType::fromType<VoiceDirectionStatus>();
}

void RecordsTest::typesAreRegisteredUnderTheirNames() {
    QFETCH(QByteArray, name);
    QTEST(QMetaType::fromName(name), "type");
}

void RecordsTest::recordsCrossThreadsUnchanged() {
    VoiceDirectionStatus sent;
    sent.running = sent.fresh = sent.hasDirection = sent.inverted = true;
    sent.lowConfidence = false;
    sent.angleDegrees = -12.5;
    sent.confidence = 0.75;
    sent.eventTimeMs = 1234567890123;
    sent.source = u"event.json"_s;
    sent.reason = u"live"_s;
    FaceOverlay overlay;
    overlay.rect = QRect(1, 2, 3, 4);
    overlay.label = u"Tavin"_s;

    RecordSender sender;
    QThread thread;
    sender.moveToThread(&thread);
    VoiceDirectionStatus voice;
    QList<FaceOverlay> overlays;
    QList<float> depth;
    connect(&sender, &RecordSender::voiceRead, this, [&](const auto& status) { voice = status; });
    connect(&sender, &RecordSender::overlaysReady, this,
            [&](const auto& list) { overlays = list; });
    connect(&sender, &RecordSender::depthRawReady, this, [&](const auto& list) { depth = list; });
    connect(&thread, &QThread::started, &sender, [&] {
        Q_EMIT sender.voiceRead(sent);
        Q_EMIT sender.overlaysReady({overlay});
        Q_EMIT sender.depthRawReady({0.0F, 4500.5F});
    });
    thread.start();
    QTRY_COMPARE(depth, (QList<float>{0.0F, 4500.5F}));
    thread.quit();
    QVERIFY(thread.wait(3000));

    QVERIFY(voice.running && voice.fresh && voice.hasDirection && voice.inverted);
    QVERIFY(!voice.lowConfidence);
    QCOMPARE(voice.angleDegrees, -12.5);
    QCOMPARE(voice.confidence, 0.75);
    QCOMPARE(voice.eventTimeMs, 1234567890123);
    QCOMPARE(voice.source + voice.reason, u"event.jsonlive"_s);
    QCOMPARE(overlays.size(), 1);
    QCOMPARE(overlays.first().rect, QRect(1, 2, 3, 4));
    QCOMPARE(overlays.first().label, u"Tavin"_s);
}

QTEST_GUILESS_MAIN(RecordsTest)
#include "records_test.moc"
