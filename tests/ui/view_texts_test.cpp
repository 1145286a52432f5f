#include "ui/page_content.h"
#include "ui/status_texts.h"
#include "ui/stream_tiles.h"
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
    void tilesInOrder_data();
    void tilesInOrder();
    void tilesAreFoundByTheirExactKey();
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
    for (int i = 0; i < int(viewSpecs().size()); ++i) {
        QCOMPARE(viewNamed(viewSpecs().at(i).key), View(i));
        QCOMPARE(viewSpecs().at(i).view, View(i));
    }
    for (const QString& key : {u"RGB"_s, u"rgb "_s, QString(), u"combo_rgb"_s})
        QVERIFY(!viewNamed(key));
}

void ViewTextsTest::keysOneToSevenSelectViews() {
    const QStringList keys{u"rgb"_s,   u"ir"_s,   u"depth"_s, u"skeletal"_s,
                           u"combo"_s, u"room"_s, u"follow"_s};
    for (int i = 0; i < int(keys.size()); ++i)
        QCOMPARE(viewForKeyboardKey(Qt::Key_1 + i), viewNamed(keys.at(i)));
    for (int other : {int(Qt::Key_0), int(Qt::Key_8), int(Qt::Key_Q), int(Qt::Key_Escape), 0, -1})
        QVERIFY(!viewForKeyboardKey(other));
}

void ViewTextsTest::tilesInOrder_data() {
    QTest::addColumn<int>("index");
    QTest::addColumn<View>("view");
    QTest::addColumn<Stream>("stream");
    QTest::addColumn<bool>("overlays");
    QTest::addColumn<bool>("voice");
    QTest::addColumn<QSize>("minimum");
    int index = 0;
    const auto row = [&index](const char* key, View view, Stream stream, bool overlays, bool voice,
                              const QSize& minimum = {120, 90}) {
        QTest::newRow(key) << index++ << view << stream << overlays << voice << minimum;
    };
    row("rgb", View::Rgb, Stream::Color, true, true);
    row("ir", View::Ir, Stream::Infrared, false, true);
    row("depth", View::Depth, Stream::Depth, false, true);
    row("combo_rgb", View::Combo, Stream::Color, true, true, {360, 240});
    row("combo_ir", View::Combo, Stream::Infrared, false, false, {140, 95});
    row("combo_depth", View::Combo, Stream::Depth, false, false, {140, 95});
    row("room_rgb", View::Room, Stream::Color, true, true, {120, 310});
    row("follow_rgb", View::Follow, Stream::Color, true, true, {120, 310});
    QCOMPARE(streamTiles().size(), index);
}

void ViewTextsTest::tilesInOrder() {
    QFETCH(int, index);
    const TileSpec& tile = streamTiles().at(index);
    QCOMPARE(tile.key, QString::fromLatin1(QTest::currentDataTag()));
    QTEST(tile.view, "view");
    QTEST(tile.stream, "stream");
    QTEST(tile.overlays, "overlays");
    QTEST(tile.voice, "voice");
    QTEST(tile.minimumSize, "minimum");
}

void ViewTextsTest::tilesAreFoundByTheirExactKey() {
    for (const TileSpec& tile : streamTiles())
        QCOMPARE(tileNamed(tile.key), &tile);
    for (const QString& key : {u"RGB"_s, u"rgb "_s, QString(), u"combo"_s, u"skeletal"_s})
        QVERIFY(!tileNamed(key));
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
    QTEST(tileNamed(tile)->placeholder, "placeholder");
}

void ViewTextsTest::statusTexts_data() {
    QTest::addColumn<StatusText>("text");
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
    QFETCH(StatusText, text);
    QTEST(text.whole(), "expected");
}

void ViewTextsTest::demoPeopleAreForScenesWithoutLiveStreams() {
    const QStringList both{u"Tavin DEMO"_s, u"Person 2 DEMO"_s};
    QCOMPARE(demoPeople(View::Skeletal, true), both);
    QCOMPARE(demoPeople(View::Room, true), both);
    QCOMPARE(demoPeople(View::Follow, true), both.first(1));
    for (const View view : {View::Rgb, View::Ir, View::Depth, View::Combo})
        QVERIFY(demoPeople(view, true).isEmpty());
    for (const ViewSpec& spec : viewSpecs())
        QVERIFY(demoPeople(spec.view, false).isEmpty());
}

QTEST_APPLESS_MAIN(ViewTextsTest)
#include "view_texts_test.moc"
