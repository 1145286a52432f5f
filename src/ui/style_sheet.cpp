#include "ui/style_sheet.h"

#include <QFont>
#include <QLabel>
#include <QPalette>
#include <QScrollBar>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView applicationSheet(R"(
QMainWindow, QWidget#root {
    background: #0d1118;
    color: #e8eef7;
    font-family: "Inter", "Segoe UI", "Ubuntu", sans-serif;
    font-size: 12px;
}
QLabel#appTitle { font-size: 22px; font-weight: 700; color: #f3f7fc; }
QLabel#appSubtitle, QLabel#muted, QLabel#sceneHint { color: #8fa1b7; }
QPushButton#viewButton {
    background: #171e2a;
    border: 1px solid #2b3748;
    border-radius: 6px;
    color: #d9e3f0;
    font-weight: 600;
    padding: 7px 8px;
    min-width: 58px;
}
QPushButton#viewButton:hover { border-color: #4b9eea; background: #1d2837; }
QPushButton#viewButton:checked {
    background: #123a4b;
    border-color: #35c4ee;
    color: #ffffff;
}
QFrame#viewFrame, QFrame#panel {
    background: #121821;
    border: 1px solid #2a3443;
    border-radius: 8px;
}
QFrame#mockViewport {
    background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #162130, stop:1 #0a0f16);
    border: 1px solid #344254;
    border-radius: 8px;
}
QLabel#currentView { font-size: 18px; font-weight: 800; color: #f4f8ff; }
QLabel#panelTitle { font-size: 14px; font-weight: 800; color: #f0f5fb; }
QLabel#keyLabel { color: #8fa1b7; font-weight: 600; }
QLabel#valueLabel { color: #edf4ff; font-weight: 600; }
QLabel#personName {
    color: #f4f8ff;
    font-weight: 800;
    background: rgba(10, 14, 20, 180);
    border-radius: 4px;
    padding: 4px 8px;
}
QFrame#personSilhouette {
    background: #1f6f43;
    border: 2px solid #62e38b;
    border-radius: 42px;
}
QFrame#personSilhouette[unknown="true"] { background: #243d78; border-color: #7fa8ff; }
QFrame#speakerLight {
    background: #2b3442;
    border: 1px solid #556170;
    border-radius: 5px;
    min-width: 20px;
    max-width: 28px;
    min-height: 10px;
    max-height: 10px;
}
QFrame#speakerLight[active="true"] { background: #62e38b; border-color: #d8ffe3; }
QFrame#speakerLight[unknown="true"] { background: #5aa7ff; border-color: #c8dcff; }
QWidget#streamImage {
    background: #070b10;
    border: 1px solid #344254;
    border-radius: 6px;
    color: #9fb0c4;
    font-weight: 700;
}
QLabel#speakerStatus { color: #b8c7d8; font-size: 12px; }
QLabel#statusPill {
    border-radius: 5px;
    padding: 3px 8px;
    color: #f4f8ff;
    background: #253145;
    border: 1px solid #3a4658;
}
QLabel#statusPill[state="pending"] { color: #d8e5f3; background: #253145; }
QLabel#statusPill[state="safe"] { background: #193525; border-color: #356b48; }
QLabel#statusPill[state="warn"] { background: #3b2f16; border-color: #81652c; }
QFrame#divider { color: #293343; background: #293343; max-height: 1px; }
QWidget[layoutDebug="true"], QFrame[layoutDebug="true"], QLabel[layoutDebug="true"] {
    border: 1px dashed #ffcc66;
}
)");

/// The font of the sheet's first rule. That rule reaches the window and its root alone; the rest
/// inherits the window's font, which would be the desktop's.
QFont baseFont() {
    QFont font;
    font.setFamilies({u"Inter"_s, u"Segoe UI"_s, u"Ubuntu"_s, u"sans-serif"_s});
    font.setPixelSize(12);
    return font;
}

/// The view buttons' color on the window's.
QPalette scrollBarPalette() {
    QPalette palette(QColor(0x17, 0x1e, 0x2a), QColor(0x0d, 0x11, 0x18));
    palette.setColor(QPalette::WindowText, QColor(0xe8, 0xee, 0xf7));
    palette.setColor(QPalette::ButtonText, QColor(0xe8, 0xee, 0xf7));
    return palette;
}

/// Whether the layout-debug mode outlines a widget: labels and the frames that hold others, but not
/// what has a shape of its own.
bool isOutlined(const QWidget* widget) {
    const QString name = widget->objectName();
    if (qobject_cast<const QLabel*>(widget))
        return name != u"statusPill"_s && name != u"personName"_s;
    return name == u"root"_s || name == u"viewFrame"_s || name == u"panel"_s ||
           name == u"mockViewport"_s;
}

void markForLayoutDebug(const QWidget* window) {
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        if (isOutlined(widget))
            widget->setProperty("layoutDebug", true);
    }
}

} // namespace

QString applicationStyleSheet() {
    return applicationSheet;
}

QString layoutDebugStyleSheet() {
    return QStringLiteral(R"(
QFrame#viewFrame[layoutDebug="true"], QFrame#panel[layoutDebug="true"],
QFrame#mockViewport[layoutDebug="true"] {
    border: 1px dashed #ffcc66;
}
)");
}

void applyLook(QWidget* window, bool layoutDebug) {
    if (layoutDebug)
        markForLayoutDebug(window);
    window->setFont(baseFont());
    window->setStyleSheet(applicationStyleSheet() +
                          (layoutDebug ? layoutDebugStyleSheet() : QString()));
    // Under a style sheet a palette does not reach a widget's children.
    for (QScrollBar* bar : window->findChildren<QScrollBar*>())
        bar->setPalette(scrollBarPalette());
}
