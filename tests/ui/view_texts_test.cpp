#include "ui/page_content.h"
#include "ui/status_texts.h"
#include "ui/view_specs.h"

#include <QTest>

using namespace Qt::StringLiterals;

class ViewTextsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sevenViewsInOrder_data();
    void sevenViewsInOrder();
    void viewsAreFoundByTheirExactKey();
    void keysOneToSevenSelectViews();
    void placeholdersNameTheirStream_data();
    void placeholdersNameTheirStream();
    void statusTexts_data();
    void statusTexts();
    void demoPeopleAreForScenesWithoutLiveStreams();
};

void ViewTextsTest::sevenViewsInOrder_data() {
    QTest::addColumn<int>("index");
    QTest::addColumn<QStringList>("texts");
    const QList<QStringList> table{
        {u"rgb"_s, u"RGB"_s, u"CURRENT VIEW: RGB"_s, u"Live Kinect RGB stream."_s},
        {u"ir"_s, u"IR"_s, u"CURRENT VIEW: IR"_s,
         u"Live Kinect infrared stream, normalized for visibility."_s},
        {u"depth"_s, u"Depth"_s, u"CURRENT VIEW: DEPTH"_s,
         u"Live Kinect depth map, colorized for visibility."_s},
        {u"skeletal"_s, u"Skeletal"_s, u"CURRENT VIEW: SKELETAL"_s,
         u"Skeleton tracking is unavailable in Gate 4. Face/depth awareness remains active."_s},
        {u"combo"_s, u"Combo"_s, u"CURRENT VIEW: COMBO"_s,
         u"Live RGB with IR/depth previews, face overlay, distance, and read-only Auralis status."_s},
        {u"room"_s, u"Room"_s, u"CURRENT VIEW: ROOM OVERVIEW"_s,
         u"Wide RGB room view with accepted face/body tracks."_s},
        {u"follow"_s, u"Follow"_s, u"CURRENT VIEW: FOLLOW"_s,
         u"Software follow view crops toward the best accepted face/body target."_s},
    };
    QCOMPARE(viewSpecs().size(), table.size());
    for (int i = 0; i < int(table.size()); ++i)
        QTest::newRow(qPrintable(table.at(i).first())) << i << table.at(i);
}

void ViewTextsTest::sevenViewsInOrder() {
    QFETCH(int, index);
    const ViewSpec view = viewSpecs().at(index);
    QTEST((QStringList{view.key, view.buttonText, view.title, view.description}), "texts");
}

void ViewTextsTest::viewsAreFoundByTheirExactKey() {
    QCOMPARE(viewIndex(viewSpecs(), u"rgb"_s), 0);
    QCOMPARE(viewIndex(viewSpecs(), u"follow"_s), 6);
    for (const QString& key : {u"RGB"_s, u"rgb "_s, QString(), u"combo_rgb"_s})
        QCOMPARE(viewIndex(viewSpecs(), key), -1);
}

void ViewTextsTest::keysOneToSevenSelectViews() {
    const QStringList keys{u"rgb"_s,   u"ir"_s,   u"depth"_s, u"skeletal"_s,
                           u"combo"_s, u"room"_s, u"follow"_s};
    for (int i = 0; i < int(keys.size()); ++i)
        QCOMPARE(viewKeyFor(viewSpecs(), Qt::Key_1 + i), keys.at(i));
    for (int other : {int(Qt::Key_0), int(Qt::Key_8), int(Qt::Key_Q), int(Qt::Key_Escape), 0, -1})
        QVERIFY(viewKeyFor(viewSpecs(), other).isEmpty());
}

void ViewTextsTest::placeholdersNameTheirStream_data() {
    QTest::addColumn<QString>("tile");
    QTest::addColumn<QString>("placeholder");
    for (const QString& tile : {u"rgb"_s, u"combo_rgb"_s, u"room_rgb"_s, u"follow_rgb"_s})
        QTest::newRow(qPrintable(tile)) << tile << u"Waiting for RGB stream"_s;
    for (const QString& tile : {u"ir"_s, u"combo_ir"_s})
        QTest::newRow(qPrintable(tile)) << tile << u"Waiting for IR stream"_s;
    for (const QString& tile : {u"depth"_s, u"combo_depth"_s})
        QTest::newRow(qPrintable(tile)) << tile << u"Waiting for depth stream"_s;
}

void ViewTextsTest::placeholdersNameTheirStream() {
    QFETCH(QString, tile);
    QTEST(streamPlaceholder(tile), "placeholder");
}

void ViewTextsTest::statusTexts_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("start") << statusText::atStart(false)
                           << u"Kinect stream backend starting. Recognition and depth awareness "
                              "starting. Auralis direction is read-only."_s;
    QTest::newRow("mock start") << statusText::atStart(true)
                                << u"Mock mode: Kinect backend disabled. Demo visuals only."_s;
    QTest::newRow("view") << statusText::forView(u"Combo"_s)
                          << u"Gate 4 live awareness. Current view: Combo. Face overlay, depth "
                             "distance, and read-only Auralis event status active."_s;
    QTest::newRow("stream") << statusText::forStream(u"Kinect: stopped"_s)
                            << u"Kinect: stopped | Face overlay, depth distance, and read-only "
                               "Auralis awareness active."_s;
    QTest::newRow("stream error") << statusText::forStreamError(u"Kinect unavailable: x"_s)
                                  << u"Kinect unavailable: x | Use --mock to review the shell "
                                     "without Kinect."_s;
    QTest::newRow("face") << statusText::forFace(u"Face recognition stopped"_s)
                          << u"Face recognition stopped | Skeletal tracking remains disconnected; "
                             "voice direction is read-only attention data."_s;
    QTest::newRow("foreign texts are no templates")
        << statusText::forStreamError(u"%1 <b>%2</b> 100%"_s)
        << u"%1 <b>%2</b> 100% | Use --mock to review the shell without Kinect."_s;
}

void ViewTextsTest::statusTexts() {
    QFETCH(QString, text);
    QTEST(text, "expected");
}

void ViewTextsTest::demoPeopleAreForScenesWithoutLiveStreams() {
    const QStringList both{u"Tavin DEMO"_s, u"Person 2 DEMO"_s};
    QCOMPARE(demoPeople(u"skeletal"_s, true), both);
    QCOMPARE(demoPeople(u"room"_s, true), both);
    QCOMPARE(demoPeople(u"follow"_s, true), both.first(1));
    for (const QString& key : {u"rgb"_s, u"ir"_s, u"depth"_s, u"combo"_s, u"attic"_s})
        QVERIFY(demoPeople(key, true).isEmpty());
    for (const ViewSpec& view : viewSpecs())
        QVERIFY(demoPeople(view.key, false).isEmpty());
}

QTEST_APPLESS_MAIN(ViewTextsTest)
#include "view_texts_test.moc"
