#include "ui/main_window.h"

#include "app/record_types.h"
#include "support/temporary_place.h"
#include "ui/stream_image_widget.h"

#include <QBoxLayout>
#include <QDir>
#include <QFile>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QStackedWidget>
#include <QTest>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

QImage grayImage() {
    QImage image(64, 48, QImage::Format_RGB888);
    image.fill(Qt::gray);
    return image;
}

QString sizeText(const QSize& size) {
    const auto number = [](int value) {
        return value == QWIDGETSIZE_MAX ? u"any"_s : QString::number(value);
    };
    return number(size.width()) + u'x' + number(size.height());
}

QString policyText(QSizePolicy::Policy policy) {
    switch (policy) {
    case QSizePolicy::Fixed:
        return u"fixed"_s;
    case QSizePolicy::Preferred:
        return u"preferred"_s;
    case QSizePolicy::Expanding:
        return u"expanding"_s;
    default:
        return QString::number(int(policy));
    }
}

QString alignmentText(Qt::Alignment alignment) {
    QStringList parts;
    if (alignment & Qt::AlignLeft)
        parts.append(u"left"_s);
    if (alignment & Qt::AlignRight)
        parts.append(u"right"_s);
    if (alignment & Qt::AlignHCenter)
        parts.append(u"center"_s);
    if (alignment & Qt::AlignTop)
        parts.append(u"top"_s);
    if (alignment & Qt::AlignVCenter)
        parts.append(u"middle"_s);
    return parts.join(u'-');
}

QString marginsText(const QMargins& margins) {
    return u"%1,%2,%3,%4"_s.arg(margins.left())
        .arg(margins.top())
        .arg(margins.right())
        .arg(margins.bottom());
}

/// Writes a tree of widgets as indented lines: for each its kind, name, texts, limits and
/// properties, for each layout its margins, spacing and stretches.
class Describer {
public:
    static QString describe(QWidget* window) {
        Describer describer;
        describer.addWidget(window, 0, {});
        return describer.lines.join(u'\n') + u'\n';
    }

private:
    void add(int depth, const QString& text) {
        lines.append(QString(2 * depth, u' ') + text.trimmed());
    }

    static QString own(const QWidget* widget) {
        QStringList facts{QString::fromLatin1(widget->metaObject()->className())};
        if (!widget->objectName().isEmpty() && !widget->objectName().startsWith(u"qt_"_s))
            facts.append(u'#' + widget->objectName());
        if (const auto* label = qobject_cast<const QLabel*>(widget)) {
            facts.append(u'"' + label->text() + u'"');
            facts.append(alignmentText(label->alignment()));
            facts.append(label->wordWrap() ? u"wrapped"_s : u"one row"_s);
        }
        if (const auto* button = qobject_cast<const QPushButton*>(widget)) {
            facts.append(u'"' + button->text() + u'"');
            facts.append(button->isCheckable() ? u"checkable"_s : u"plain"_s);
        }
        for (const char* name : {"state", "active", "unknown", "layoutDebug"}) {
            if (const QVariant value = widget->property(name); value.isValid())
                facts.append(QString::fromLatin1(name) + u'=' + value.toString());
        }
        if (!widget->minimumSize().isNull())
            facts.append(u"min "_s + sizeText(widget->minimumSize()));
        if (widget->maximumSize() != QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX))
            facts.append(u"max "_s + sizeText(widget->maximumSize()));
        const QSizePolicy policy = widget->sizePolicy();
        if (policy.horizontalPolicy() != QSizePolicy::Preferred ||
            policy.verticalPolicy() != QSizePolicy::Preferred)
            facts.append(policyText(policy.horizontalPolicy()) + u'/' +
                         policyText(policy.verticalPolicy()));
        return facts.join(u' ');
    }

    void addWidget(QWidget* widget, int depth, const QString& place) {
        add(depth, place + own(widget));
        if (const auto* area = qobject_cast<QScrollArea*>(widget)) {
            add(depth + 1,
                u"scrolls, resizable %1, frame %2, horizontal bar %3"_s.arg(area->widgetResizable())
                    .arg(int(area->frameShape()))
                    .arg(int(area->horizontalScrollBarPolicy())));
            addWidget(area->widget(), depth + 1, {});
        } else if (const auto* splitter = qobject_cast<QSplitter*>(widget)) {
            add(depth + 1, u"splitter, handle %1, collapsible %2"_s.arg(splitter->handleWidth())
                               .arg(splitter->childrenCollapsible()));
            for (int i = 0; i < splitter->count(); ++i)
                addWidget(
                    splitter->widget(i), depth + 1,
                    u"stretch %1: "_s.arg(splitter->widget(i)->sizePolicy().horizontalStretch()));
        } else if (const auto* stack = qobject_cast<QStackedWidget*>(widget)) {
            for (int i = 0; i < stack->count(); ++i)
                addWidget(stack->widget(i), depth + 1, u"page %1: "_s.arg(i));
        } else if (widget->layout()) {
            addLayout(widget->layout(), depth + 1, {});
        }
    }

    void addLayout(QLayout* layout, int depth, const QString& place) {
        if (auto* box = qobject_cast<QBoxLayout*>(layout)) {
            const bool vertical = box->direction() == QBoxLayout::TopToBottom;
            const bool inside = box->parentWidget() && box->parentWidget()->layout() != box;
            add(depth,
                place + (vertical ? u"vertical"_s : u"horizontal"_s) +
                    (inside ? QString() : u" margins "_s + marginsText(box->contentsMargins())) +
                    u" spacing %1 %2"_s.arg(box->spacing()).arg(alignmentText(box->alignment())));
            for (int i = 0; i < box->count(); ++i)
                addItem(box->itemAt(i), depth + 1, u"stretch %1: "_s.arg(box->stretch(i)));
        } else if (auto* grid = qobject_cast<QGridLayout*>(layout)) {
            addGrid(grid, depth, place);
        } else {
            addItem(layout->itemAt(0), depth, place);
        }
    }

    void addGrid(QGridLayout* grid, int depth, const QString& place) {
        QStringList stretches;
        for (int column = 0; column < grid->columnCount(); ++column)
            stretches.append(u"column %1"_s.arg(grid->columnStretch(column)));
        for (int row = 0; row < grid->rowCount(); ++row)
            stretches.append(u"row %1"_s.arg(grid->rowStretch(row)));
        add(depth, place + u"grid spacing %1,%2 stretches %3"_s.arg(grid->horizontalSpacing())
                               .arg(grid->verticalSpacing())
                               .arg(stretches.join(u", "_s)));
        for (int i = 0; i < grid->count(); ++i) {
            int row = 0;
            int column = 0;
            int rows = 0;
            int columns = 0;
            grid->getItemPosition(i, &row, &column, &rows, &columns);
            addItem(grid->itemAt(i), depth + 1,
                    u"at %1,%2 over %3,%4: "_s.arg(row).arg(column).arg(rows).arg(columns));
        }
    }

    void addItem(QLayoutItem* item, int depth, const QString& place) {
        const QString aligned =
            item->alignment() ? place + alignmentText(item->alignment()) + u' ' : place;
        if (item->widget())
            addWidget(item->widget(), depth, aligned);
        else if (item->layout())
            addLayout(item->layout(), depth, aligned);
        else
            add(depth, aligned + u"space"_s);
    }

    QStringList lines;
};

/// A living service (this process) that hears somebody on the right.
void writeFreshEvent(const TemporaryPlace& place) {
    const QString folder = place.home() + u"/.local/state/lumeno"_s;
    QVERIFY(QDir().mkpath(folder));
    QFile pid(folder + u"/auralis-live.pid"_s);
    QVERIFY(pid.open(QIODevice::WriteOnly));
    pid.write(QByteArray::number(QCoreApplication::applicationPid()));
    QFile event(folder + u"/auralis-live-event.json"_s);
    QVERIFY(event.open(QIODevice::WriteOnly));
    event.write(R"({"direction_angle_degrees": 25, "direction_confidence": 0.9, )"
                R"("status": "running"})");
}

} // namespace

/// The whole tree of the window: what stands where, with which margins, spacings, stretches, limits
/// and texts. A change that is meant is made in the expected files too: a run that fails leaves
/// what it found beside the test.
class WindowStructureTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { registerRecordTypes(); }
    void everythingStandsInItsPlace_data();
    void everythingStandsInItsPlace();
    void aFreshVoiceEventChangesNoLightOfTheHud();
    void theLayoutDebugLineOfARealWindow();
};

void WindowStructureTest::everythingStandsInItsPlace_data() {
    QTest::addColumn<bool>("layoutDebug");
    QTest::addColumn<bool>("demo");
    QTest::newRow("window_live") << false << false;
    QTest::newRow("window_demo") << false << true;
    QTest::newRow("window_layout_debug") << true << false;
}

void WindowStructureTest::everythingStandsInItsPlace() {
    QFETCH(bool, layoutDebug);
    QFETCH(bool, demo);
    const TemporaryPlace place;
    MainWindow window(layoutDebug, true, demo, demo, 5000, false);
    window.resize(1440, 810);
    window.show();
    QCoreApplication::processEvents();

    const QString name = QString::fromLatin1(QTest::currentDataTag()) + u".txt"_s;
    QFile expected(QStringLiteral(LUMENO_EXPECTED_STRUCTURE) + u'/' + name);
    QVERIFY(expected.open(QIODevice::ReadOnly));
    const QStringList wanted = QString::fromUtf8(expected.readAll()).split(u'\n');
    const QString found = Describer::describe(window.centralWidget());
    const QStringList lines = found.split(u'\n');
    if (lines != wanted) {
        QFile actual(QCoreApplication::applicationDirPath() + u"/actual_"_s + name);
        QVERIFY(actual.open(QIODevice::WriteOnly));
        actual.write(found.toUtf8());
    }
    for (int i = 0; i < std::min(lines.size(), wanted.size()); ++i)
        QCOMPARE(lines.at(i), wanted.at(i));
    QCOMPARE(lines.size(), wanted.size());
}

void WindowStructureTest::aFreshVoiceEventChangesNoLightOfTheHud() {
    const TemporaryPlace place;
    for (const bool demo : {false, true}) {
        MainWindow window(false, true, demo, demo, 5000, false);
        window.setView(u"skeletal"_s);
        const auto lights = window.findChildren<QFrame*>(u"speakerLight"_s);
        QCOMPARE(lights.size(), 6);
        QWidget* hud = lights.first()->parentWidget();
        const QImage before = hud->grab().toImage();
        StreamImageWidget* tile = window.streamLabel(u"rgb"_s);
        tile->resize(600, 400);
        const QImage tileBefore = tile->grab().toImage();
        writeFreshEvent(place);
        window.pollAuralisStatus();
        window.onFramesReady(grayImage(), {}, {});
        QVERIFY2(tile->grab().toImage() != tileBefore, "the lights of the tiles do follow");
        QCOMPARE(hud->grab().toImage(), before);
    }
}

void WindowStructureTest::theLayoutDebugLineOfARealWindow() {
    const TemporaryPlace place;
    MainWindow window(true, true, true, true, 5000, false);
    window.show();
    const auto lineOf = [&] {
        return window.centralWidget()
            ->findChildren<QLabel*>(u"muted"_s, Qt::FindDirectChildrenOnly)
            .last()
            ->text();
    };
    const QString end = u" | min: %1x%2 | panels: scrollable"_s.arg(window.minimumWidth())
                            .arg(window.minimumHeight());
    window.resize(1440, 810);
    QCOMPARE(lineOf(), u"layout: normal | window: 1440x810"_s + end);
    window.resize(1000, 700);
    QCOMPARE(lineOf(), u"layout: compact | window: 1000x700"_s + end);
}

QTEST_MAIN(WindowStructureTest)
#include "window_structure_test.moc"
