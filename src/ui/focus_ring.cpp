#include "ui/focus_ring.h"

#include <QEvent>
#include <QFocusEvent>
#include <QPainter>

namespace {

// On the window's darkest and lightest surfaces: 17 and 9 times as bright (WCAG 2 asks for 3).
constexpr QColor ringColor(243, 247, 252);
constexpr int ringWidth = 2;
constexpr int ringDistance = 3; // from the widget's edge to the ring's outer edge
constexpr qreal ringRadius = 8.0;

bool isKeyboard(Qt::FocusReason reason) {
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
           reason == Qt::ShortcutFocusReason;
}

} // namespace

FocusRing::FocusRing(QWidget* area) : QFocusFrame(area) {
    hide();
    for (QWidget* widget : area->findChildren<QWidget*>()) {
        if (widget->focusPolicy() == Qt::NoFocus)
            continue;
        // What holds a widget may be moved, and the widget with it.
        for (QWidget* moved = widget; moved != area; moved = moved->parentWidget())
            moved->installEventFilter(this);
    }
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::FocusIn: {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (isKeyboard(reason))
            byKeyboard = true;
        else if (reason == Qt::MouseFocusReason)
            byKeyboard = false;
        focused = qobject_cast<QWidget*>(watched);
        place();
        break;
    }
    case QEvent::FocusOut:
        focused = nullptr;
        place();
        break;
    case QEvent::Move:
    case QEvent::Resize:
        place();
        break;
    default:
        break;
    }
    return false;
}

void FocusRing::place() {
    const bool shown = focused && byKeyboard;
    if (shown) {
        const QRect ringed(focused->mapTo(parentWidget(), QPoint()), focused->size());
        setGeometry(ringed.adjusted(-ringDistance, -ringDistance, ringDistance, ringDistance));
        raise();
    }
    setVisible(shown);
}

void FocusRing::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(ringColor, ringWidth));
    const qreal half = ringWidth / 2.0;
    painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), ringRadius,
                            ringRadius);
}
