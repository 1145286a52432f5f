#include "ui/elided_rows.h"

#include "ui/stream_overlay_text.h"

#include <QFontMetrics>
#include <QTextLayout>
#include <QTextOption>
#include <algorithm>

namespace {

/// The elided part is found to this many characters: each try lays a text out.
constexpr int step = 4;

/// The rows of `line`; no more than one beyond `maximumRows`, which says that it does not fit.
QStringList wrapped(const QString& line, const QFont& font, int width, int maximumRows) {
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(Qt::LeftToRight);
    QTextLayout layout(line, font);
    layout.setTextOption(option);
    QStringList rows;
    layout.beginLayout();
    while (rows.size() <= maximumRows) {
        QTextLine row = layout.createLine();
        if (!row.isValid())
            break;
        row.setLineWidth(width);
        rows.append(line.mid(row.textStart(), row.textLength()).trimmed());
    }
    layout.endLayout();
    return rows;
}

/// The first and the last characters of `text`, `kept` of them, with "…" between them. No character
/// that takes two places is cut in half.
QString withoutMiddle(const QString& text, qsizetype kept) {
    QString left = text.left((kept + 1) / 2);
    QString right = text.right(kept / 2);
    if (!left.isEmpty() && left.back().isHighSurrogate())
        left.chop(1);
    if (!right.isEmpty() && right.front().isLowSurrogate())
        right.remove(0, 1);
    return left + u'…' + right;
}

/// About how many characters of `text` fill `width` pixels, rather too many than too few.
qsizetype roomFor(const QString& text, const QFont& font, int width) {
    const int all = std::max(QFontMetrics(font).horizontalAdvance(text), 1);
    return width * text.size() * 9 / (8 * all);
}

/// The largest number from 0 to `most` for which `fits` holds; 0 where it holds for none.
template <class Fits>
qsizetype largestThat(qsizetype most, const Fits& fits) {
    qsizetype low = 0;
    while (low < most) {
        const qsizetype middle = low + (most - low + 1) / 2;
        if (fits(middle))
            low = middle;
        else
            most = middle - 1;
    }
    return low;
}

} // namespace

QStringList elidedRows(const StatusText& text, const QFont& font, int width, int maximumRows) {
    const QString beginning = streamText::singleLine(text.beginning);
    QString foreign = streamText::singleLine(text.foreign);
    const QString ending = streamText::singleLine(text.ending);
    const auto rowsOf = [&](const QString& line) {
        return wrapped(line, font, width, maximumRows);
    };
    const auto fits = [&](const QString& line) { return rowsOf(line).size() <= maximumRows; };

    const QString whole = beginning + foreign + ending;
    if (QStringList rows = rowsOf(whole); rows.size() <= maximumRows)
        return rows;
    if (foreign.endsWith(u'…')) // cut already: one sign for both is enough
        foreign.chop(1);
    const auto shortened = [&](qsizetype kept) {
        return beginning + withoutMiddle(foreign, kept) + ending;
    };
    if (!foreign.isEmpty() && fits(shortened(0))) {
        const qsizetype most =
            std::min(foreign.size() - 1, roomFor(foreign, font, width * maximumRows));
        const auto fitsInSteps = [&](qsizetype steps) { return fits(shortened(steps * step)); };
        return rowsOf(shortened(largestThat(most / step, fitsInSteps) * step));
    }
    const QString own = beginning + ending;
    return rowsOf(withoutMiddle(own, largestThat(own.size() - 1, [&](qsizetype kept) {
                                    return fits(withoutMiddle(own, kept));
                                })));
}
