#include "ui/responsive_layout.h"

#include <QTest>
#include <QWidget>

using namespace Qt::StringLiterals;

class ResponsiveLayoutTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void upTo1099PixelsIsCompact();
    void compactSplitterAndPanelLimits_data();
    void compactSplitterAndPanelLimits();
    void normalSplitter_data();
    void normalSplitter();
    void minimumSize_data();
    void minimumSize();
    void firstSize_data();
    void firstSize();
    void windowIsCentredOnTheWorkArea_data();
    void windowIsCentredOnTheWorkArea();
    void lowWindowsHaveLowStatusLines();
    void debugTextNamesModeAndSizes();
};

void ResponsiveLayoutTest::upTo1099PixelsIsCompact() {
    QVERIFY(responsiveLayout({1099, 800}).compact);
    QVERIFY(!responsiveLayout({1100, 800}).compact);
    QCOMPARE(layoutModeName(true), u"compact"_s);
    QCOMPARE(layoutModeName(false), u"normal"_s);
}

void ResponsiveLayoutTest::compactSplitterAndPanelLimits_data() {
    QTest::addColumn<int>("height");
    QTest::addColumn<QList<int>>("sizes");
    QTest::addColumn<int>("panelMaximumHeight");
    QTest::newRow("390") << 390 << QList{260, 140} << 150;
    QTest::newRow("391: twice the height is not above 782") << 391 << QList{260, 140} << 150;
    QTest::newRow("392") << 392 << QList{261, 140} << 150;
    QTest::newRow("422") << 422 << QList{281, 140} << 150;
    QTest::newRow("423") << 423 << QList{282, 141} << 150;
    QTest::newRow("452") << 452 << QList{301, 150} << 150;
    QTest::newRow("453") << 453 << QList{302, 151} << 151;
    QTest::newRow("900") << 900 << QList{600, 300} << 300;
    QTest::newRow("1") << 1 << QList{260, 140} << 150;
}

void ResponsiveLayoutTest::compactSplitterAndPanelLimits() {
    QFETCH(int, height);
    const ResponsiveLayout layout = responsiveLayout({1000, height});
    QVERIFY(layout.compact);
    QTEST(layout.splitterSizes, "sizes");
    QTEST(layout.panelMaximumHeight, "panelMaximumHeight");
    QCOMPARE(layout.panelMinimumWidth, 0);
    QCOMPARE(layout.panelMaximumWidth, QWIDGETSIZE_MAX);
}

void ResponsiveLayoutTest::normalSplitter_data() {
    QTest::addColumn<int>("width");
    QTest::addColumn<QList<int>>("sizes");
    QTest::newRow("1100") << 1100 << QList{760, 320};
    QTest::newRow("1101") << 1101 << QList{761, 320};
    QTest::newRow("3840") << 3840 << QList{3500, 320};
}

void ResponsiveLayoutTest::normalSplitter() {
    QFETCH(int, width);
    const ResponsiveLayout layout = responsiveLayout({width, 300});
    QVERIFY(!layout.compact);
    QTEST(layout.splitterSizes, "sizes");
    QCOMPARE(layout.panelMinimumWidth, 250);
    QCOMPARE(layout.panelMaximumWidth, 360);
    QCOMPARE(layout.panelMaximumHeight, QWIDGETSIZE_MAX);
}

void ResponsiveLayoutTest::minimumSize_data() {
    QTest::addColumn<std::optional<QSize>>("workArea");
    QTest::addColumn<QSize>("size");
    using Area = std::optional<QSize>;
    QTest::newRow("no screen") << Area() << QSize(560, 420);
    QTest::newRow("1920x1080") << Area({1920, 1080}) << QSize(680, 453);
    QTest::newRow("small") << Area({800, 600}) << QSize(560, 420);
    QTest::newRow("between") << Area({1499, 1001}) << QSize(599, 420);
    QTest::newRow("large") << Area({3840, 2160}) << QSize(680, 480);
}

void ResponsiveLayoutTest::minimumSize() {
    QFETCH(std::optional<QSize>, workArea);
    QTEST(minimumWindowSize(workArea), "size");
}

void ResponsiveLayoutTest::firstSize_data() {
    QTest::addColumn<std::optional<QSize>>("workArea");
    QTest::addColumn<QSize>("size");
    using Area = std::optional<QSize>;
    QTest::newRow("no screen") << Area() << QSize(960, 620);
    QTest::newRow("1920x1080") << Area({1920, 1080}) << QSize(1440, 810);
    QTest::newRow("fractions are cut off") << Area({1367, 767}) << QSize(1025, 575);
}

void ResponsiveLayoutTest::firstSize() {
    QFETCH(std::optional<QSize>, workArea);
    QTEST(firstWindowSize(workArea), "size");
}

void ResponsiveLayoutTest::windowIsCentredOnTheWorkArea_data() {
    QTest::addColumn<QRect>("workArea");
    QTest::addColumn<QSize>("window");
    QTest::addColumn<QPoint>("topLeft");
    QTest::newRow("even") << QRect(0, 0, 1920, 1080) << QSize(1440, 810) << QPoint(240, 135);
    QTest::newRow("beside a dock")
        << QRect(64, 32, 1856, 1048) << QSize(1392, 786) << QPoint(296, 163);
    QTest::newRow("larger than the area")
        << QRect(0, 0, 500, 400) << QSize(560, 420) << QPoint(-30, -10);
    QTest::newRow("left of the origin")
        << QRect(-1920, 0, 1920, 1080) << QSize(1440, 810) << QPoint(-1679, 135);
}

void ResponsiveLayoutTest::windowIsCentredOnTheWorkArea() {
    QFETCH(QRect, workArea);
    QFETCH(QSize, window);
    const QPoint topLeft = centeredTopLeft(workArea, window);
    QTEST(topLeft, "topLeft");
}

void ResponsiveLayoutTest::lowWindowsHaveLowStatusLines() {
    for (const int width : {560, 1440}) {
        QCOMPARE(responsiveLayout({width, 420}).statusLineRows, 2);
        QCOMPARE(responsiveLayout({width, 479}).statusLineRows, 2);
        QCOMPARE(responsiveLayout({width, 480}).statusLineRows, 3);
        QCOMPARE(responsiveLayout({width, 2000}).statusLineRows, 3);
    }
}

void ResponsiveLayoutTest::debugTextNamesModeAndSizes() {
    QCOMPARE(layoutDebugText(false, {1440, 810}, {680, 453}),
             u"layout: normal | window: 1440x810 | min: 680x453 | panels: scrollable"_s);
    QCOMPARE(layoutDebugText(true, {1099, 5}, {1, 2}),
             u"layout: compact | window: 1099x5 | min: 1x2 | panels: scrollable"_s);
}

QTEST_APPLESS_MAIN(ResponsiveLayoutTest)
#include "responsive_layout_test.moc"
