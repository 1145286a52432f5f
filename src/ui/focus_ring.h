#pragma once

#include <QFocusFrame>
#include <QPointer>

/// Shows which widget has the keyboard focus, by a ring round it. Like a browser's, the ring
/// appears when the focus is moved with the keyboard and goes when it is moved with the mouse: who
/// only clicks never sees it. It is a QFocusFrame so that screen readers leave it out.
class FocusRing : public QFocusFrame {
    Q_OBJECT

public:
    /// Rings the widgets that `area` holds now, painted in `area`'s coordinates above all others.
    explicit FocusRing(QWidget* area);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void place();

    QPointer<QWidget> focused; ///< Null when the focus is elsewhere.
    bool byKeyboard = false;
};
