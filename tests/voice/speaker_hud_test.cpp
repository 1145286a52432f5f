#include "voice/speaker_hud.h"

#include "ui/style_sheet.h"

#include <QFrame>
#include <QLabel>
#include <QTest>

using namespace Qt::StringLiterals;

class SpeakerHudTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sixLights_data();
    void sixLights();
    void captions_data();
    void captions();
};

void SpeakerHudTest::sixLights_data() {
    QTest::addColumn<bool>("demo");
    QTest::addColumn<QString>("pattern");
    QTest::newRow("live: all off") << false << u"......"_s;
    QTest::newRow("demo: off, active, off, active, unknown, off") << true << u".a.au."_s;
}

void SpeakerHudTest::sixLights() {
    QFETCH(bool, demo);
    const std::unique_ptr<QWidget> hud(buildSpeakerHud(demo));
    QString pattern;
    for (const QFrame* light : hud->findChildren<QFrame*>(u"speakerLight"_s)) {
        QVERIFY(light->property("active").isValid() && light->property("unknown").isValid());
        const bool active = light->property("active").toBool();
        const bool unknown = light->property("unknown").toBool();
        QVERIFY(!(active && unknown));
        pattern += active ? u'a' : unknown ? u'u' : u'.';
    }
    QTEST(pattern, "pattern");
}

void SpeakerHudTest::captions_data() {
    QTest::addColumn<bool>("demo");
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("live") << false
                          << QStringList{u"Speaker lights: inactive / no live direction data"_s,
                                         u"Speaker direction: event JSON status; inactive when "
                                         "stale/stopped"_s};
    QTest::newRow("demo") << true
                          << QStringList{
                                 u"DEMO speaker lights: Tavin / Quill / Renn visual test only"_s};
}

void SpeakerHudTest::captions() {
    QFETCH(bool, demo);
    const std::unique_ptr<QWidget> hud(buildSpeakerHud(demo));
    applyLook(hud.get(), true);
    QStringList texts;
    for (const QLabel* label : hud->findChildren<QLabel*>(u"speakerStatus"_s)) {
        texts.append(label->text());
        QCOMPARE(label->alignment(), Qt::AlignCenter);
        QVERIFY(label->wordWrap());
        QCOMPARE(label->property("layoutDebug"), QVariant(true));
    }
    QTEST(texts, "texts");
}

QTEST_MAIN(SpeakerHudTest)
#include "speaker_hud_test.moc"
