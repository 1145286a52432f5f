#include "ui/status_line.h"

#include "ui/elided_rows.h"
#include "ui/style_sheet.h"

#include <QFontMetrics>
#include <QImage>
#include <QTest>
#include <QVBoxLayout>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int wide = 1400;
const QString ending = u" | attention only, no trust granted"_s;

StatusText withForeign(const QString& foreign) {
    return {u"Auralis: stale | direction unavailable | "_s, foreign, ending};
}

QString words(int count) {
    return u"the device was lost again "_s.repeated(count);
}

/// A status line under something that takes the rest of the window.
struct Shown {
    explicit Shown(const QSize& size = {wide, 400}) {
        auto* layout = new QVBoxLayout(&window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(new QWidget, 1);
        layout->addWidget(line);
        applyLook(&window, false);
        window.resize(size);
        window.show();
        settle();
    }
    void settle() {
        for (int round = 0; round < 5; ++round)
            QCoreApplication::processEvents();
    }
    void setText(const StatusText& text) {
        line->setText(text);
        settle();
    }
    int rowHeight() const { return line->fontMetrics().height(); }

    QWidget window;
    StatusLine* line = new StatusLine(u"Voice direction status"_s);
};

} // namespace

/// What is measured and painted of a status text, and how the line keeps its place.
class StatusLineTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aShortTextIsOneRowAndWhole();
    void aLongTextKeepsItsBeginningAndItsEnding_data();
    void aLongTextKeepsItsBeginningAndItsEnding();
    void theNumberOfRowsIsKnownWithoutTheRows();
    void asMuchOfTheForeignPartIsShownAsFits();
    void whereOurOwnTextDoesNotFitItsEndsStay();
    void noCharacterIsCutInHalf();
    void textIsWholeAndToolTipBoundedAndLiteral();
    void directionOverridesDoNotTurnTheEnding();
    void rowsArePaintedFromTheTopAndWhole();
    void aRowThatWasNeededStaysUntilTheWidthChanges();
    void lowerLimitsCutRowsAtOnce();
};

void StatusLineTest::aShortTextIsOneRowAndWhole() {
    Shown shown;
    shown.setText(withForeign(u"nothing"_s));
    QCOMPARE(shown.line->rows(), QStringList{withForeign(u"nothing"_s).whole()});
    QCOMPARE(shown.line->height(), shown.rowHeight());
    QCOMPARE(shown.line->objectName(), u"muted"_s);
    QVERIFY(shown.line->wordWrap());
    QCOMPARE(shown.line->textFormat(), Qt::PlainText);
    QCOMPARE(shown.line->textInteractionFlags(), Qt::NoTextInteraction);
}

void StatusLineTest::aLongTextKeepsItsBeginningAndItsEnding_data() {
    QTest::addColumn<QString>("foreign");
    QTest::addColumn<int>("maximumRows");
    QTest::addColumn<int>("width");
    for (const int rows : {1, 2, 3}) {
        for (const int width : {532, 1400}) {
            const auto add = [=](const char* name, const QString& foreign) {
                QTest::addRow("%s, %d rows, %d wide", name, rows, width)
                    << foreign << rows << width;
            };
            add("4000 characters", words(160));
            add("a megabyte", words(40'000));
            add("one word", QString(4000, u'x'));
            add("line breaks", u"broken\n"_s.repeated(1000));
        }
    }
}

void StatusLineTest::aLongTextKeepsItsBeginningAndItsEnding() {
    QFETCH(QString, foreign);
    QFETCH(int, maximumRows);
    QFETCH(int, width);
    QFont font;
    font.setPixelSize(12);
    const QStringList rows = elidedRows(withForeign(foreign), font, width, maximumRows);
    QCOMPARE(rows.size(), maximumRows);
    QVERIFY2(rows.first().startsWith(u"Auralis: stale | "_s), qPrintable(rows.first()));
    QVERIFY2(rows.join(u' ').endsWith(u"attention only, no trust granted"_s),
             qPrintable(rows.last()));
    QCOMPARE(rows.join(u' ').count(u'…'), 1);
    for (const QString& row : rows)
        QVERIFY(QFontMetrics(font).horizontalAdvance(row) <= width);
    QCOMPARE(elidedRowCount(withForeign(foreign), font, width, maximumRows), maximumRows);
}

void StatusLineTest::theNumberOfRowsIsKnownWithoutTheRows() {
    QFont font;
    font.setPixelSize(12);
    for (int count = 0; count < 40; ++count) {
        for (const int width : {300, 698, 1400}) {
            const StatusText text = withForeign(words(count));
            QCOMPARE(elidedRowCount(text, font, width, 3),
                     int(elidedRows(text, font, width, 3).size()));
        }
    }
}

void StatusLineTest::asMuchOfTheForeignPartIsShownAsFits() {
    QFont font;
    font.setPixelSize(12);
    const QStringList rows = elidedRows(withForeign(words(160)), font, wide, 3);
    for (const QString& row : rows)
        QVERIFY2(QFontMetrics(font).horizontalAdvance(row) > wide - 120, qPrintable(row));
}

void StatusLineTest::whereOurOwnTextDoesNotFitItsEndsStay() {
    QFont font;
    font.setPixelSize(12);
    const StatusText own{u"This is the beginning and it goes on for a while "_s, u"x"_s,
                         u" and so does the part that leads to the ending"_s};
    const QStringList rows = elidedRows(own, font, 200, 1);
    QCOMPARE(rows.size(), 1);
    QVERIFY2(rows.first().startsWith(u"This is"_s), qPrintable(rows.first()));
    QVERIFY2(rows.first().endsWith(u"the ending"_s), qPrintable(rows.first()));
    QVERIFY(elidedRows(own, font, 1, 1).size() <= 2); // no room for a character: no endless search
}

void StatusLineTest::noCharacterIsCutInHalf() {
    QFont font;
    font.setPixelSize(12);
    for (int width = 500; width < 540; ++width) {
        const QString shown =
            elidedRows({u"a"_s, u"😀"_s.repeated(500), u"z"_s}, font, width, 1).join(QString());
        QVERIFY(shown.isValidUtf16());
    }
}

void StatusLineTest::textIsWholeAndToolTipBoundedAndLiteral() {
    Shown shown;
    const StatusText text = withForeign(u"<b>%1</b> & \n"_s + words(40'000));
    shown.setText(text);
    QCOMPARE(shown.line->text(), text.whole());
    QVERIFY(shown.line->toolTip().size() < 2500);
    QVERIFY(shown.line->toolTip().contains(u"&lt;b&gt;%1&lt;/b&gt; &amp; "_s));
    QVERIFY(shown.line->toolTip().contains(ending));
    QCOMPARE(shown.line->accessibleName(), u"Voice direction status"_s);
    QVERIFY(shown.line->accessibleDescription().startsWith(u"Auralis: stale"_s));
    QVERIFY(shown.line->accessibleDescription().endsWith(ending));
    QVERIFY(shown.line->accessibleDescription().size() < 2500);
}

void StatusLineTest::directionOverridesDoNotTurnTheEnding() {
    Shown shown;
    shown.setText(withForeign(u"plain"_s));
    const QImage plain = shown.line->grab().toImage();
    shown.setText(withForeign(u"\u202E"_s + u"pl"_s + u"\u2067"_s + u"ain"_s));
    QCOMPARE(shown.line->grab().toImage(), plain);
}

void StatusLineTest::rowsArePaintedFromTheTopAndWhole() {
    Shown shown;
    shown.setText(withForeign(words(160)));
    QCOMPARE(shown.line->rows().size(), 3);
    QVERIFY(shown.line->height() >= 3 * shown.rowHeight());
    QVERIFY(shown.line->height() < 3 * shown.rowHeight() + 6);
    // The first row stays where it is when the others go.
    const auto firstRow = [&] {
        return shown.line->grab(QRect(0, 0, 100, shown.rowHeight())).toImage();
    };
    const QImage before = firstRow();
    shown.setText(withForeign(u"short"_s));
    QCOMPARE(firstRow(), before);
}

void StatusLineTest::aRowThatWasNeededStaysUntilTheWidthChanges() {
    Shown shown;
    shown.setText(withForeign(words(10)));
    const int twoRows = shown.line->height();
    QVERIFY(twoRows > shown.rowHeight());
    shown.setText(withForeign(u"short"_s));
    QCOMPARE(shown.line->height(), twoRows);
    QCOMPARE(shown.line->rows().size(), 1);
    shown.window.resize(wide + 10, 400);
    shown.settle();
    QCOMPARE(shown.line->height(), shown.rowHeight());
}

void StatusLineTest::lowerLimitsCutRowsAtOnce() {
    Shown shown;
    shown.setText(withForeign(words(160)));
    shown.line->setMaximumRows(1);
    shown.settle();
    QCOMPARE(shown.line->height(), shown.rowHeight());
    QCOMPARE(shown.line->rows().size(), 1);
    QVERIFY(shown.line->rows().first().endsWith(ending));
    shown.line->setMaximumRows(2);
    shown.settle();
    QCOMPARE(shown.line->rows().size(), 2);
}

QTEST_MAIN(StatusLineTest)
#include "status_line_test.moc"
