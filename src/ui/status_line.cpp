#include "ui/status_line.h"

#include "ui/elided_rows.h"
#include "ui/stream_overlay_text.h"

#include <QEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QStyle>
#include <QStyleOption>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int textFlags = Qt::AlignLeft | Qt::AlignTop | Qt::TextForceLeftToRight;

/// Both sides of a margin pair.
int acrossOf(const QMargins& margins) {
    return margins.left() + margins.right();
}

int alongOf(const QMargins& margins) {
    return margins.top() + margins.bottom();
}

} // namespace

StatusLine::StatusLine(const QString& purpose, QWidget* parent) : QLabel(parent) {
    setObjectName(u"muted"_s);
    setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::NoTextInteraction);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setWordWrap(true);
    setAccessibleName(purpose);
}

void StatusLine::setText(const StatusText& newText) {
    if (newText == shownText)
        return;
    shownText = newText;
    measuredWidth = -1;
    keptRows = std::max(keptRows, rows().size());
    QLabel::setText(newText.whole());
    const QString bounded = streamText::singleLine(newText.beginning) +
                            streamText::singleLine(newText.foreign) +
                            streamText::singleLine(newText.ending);
    setAccessibleDescription(bounded);
    // As rich text a tool tip is wrapped, and the escaped text is shown literally.
    setToolTip(u"<p>"_s + bounded.toHtmlEscaped() + u"</p>"_s);
}

void StatusLine::setMaximumRows(int rows) {
    if (rows == maximumRows)
        return;
    maximumRows = rows;
    measuredWidth = -1;
    updateGeometry();
    update();
}

const QStringList& StatusLine::rows() const {
    if (width() != measuredWidth) {
        measuredWidth = width();
        measuredRows = elidedRows(shownText, font(), roomIn(width()), maximumRows);
    }
    return measuredRows;
}

int StatusLine::roomIn(int width) const {
    return std::max(width - acrossOf(contentsMargins()), 1);
}

int StatusLine::heightOf(qsizetype rowCount) const {
    const QString rows = QStringList(rowCount, u"X"_s).join(u'\n');
    const QRect unbounded(0, 0, QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    return fontMetrics().boundingRect(unbounded, textFlags, rows).height() +
           alongOf(contentsMargins());
}

QSize StatusLine::sizeHint() const {
    return {minimumSizeHint().width(), heightForWidth(width())};
}

QSize StatusLine::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * 20 + acrossOf(contentsMargins()), heightOf(1)};
}

int StatusLine::heightForWidth(int width) const {
    // Layouts also ask for widths that the line never gets: the number of rows is soon known.
    const qsizetype needed = width == this->width()
                                 ? std::max(rows().size(), keptRows)
                                 : elidedRowCount(shownText, font(), roomIn(width), maximumRows);
    return heightOf(std::clamp<qsizetype>(needed, 1, maximumRows));
}

void StatusLine::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    drawFrame(&painter);
    QStyleOption option;
    option.initFrom(this);
    style()->drawItemText(&painter, contentsRect(), textFlags, option.palette, isEnabled(),
                          rows().join(u'\n'), foregroundRole());
}

void StatusLine::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    if (event->size().width() != event->oldSize().width())
        keptRows = rows().size();
}

void StatusLine::changeEvent(QEvent* event) {
    measuredWidth = -1; // the font, the style or the margins may be new
    QLabel::changeEvent(event);
}
