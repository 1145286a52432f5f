#include "ui/elided_rows.h"

#include "ui/stream_overlay_text.h"

#include <QFontMetrics>
#include <QTextLayout>
#include <QTextOption>
#include <algorithm>
#include <utility>

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

/// The rows of the most characters, of at most `maximum`, whose rows fit; `rows`, those of none,
/// where no more do.
template <class RowsOf, class Fits>
QStringList longestThatFits(QStringList rows, qsizetype maximum, const RowsOf& rowsOf,
                            const Fits& fits) {
    qsizetype low = 0;
    qsizetype high = maximum / step;
    while (low < high) {
        const qsizetype middle = low + (high - low + 1) / 2;
        if (QStringList tried = rowsOf(middle * step); fits(tried)) {
            rows = std::move(tried);
            low = middle;
        } else {
            high = middle - 1;
        }
    }
    return rows;
}

} // namespace

QStringList elidedRows(const StatusText& text, const QFont& font, int width, int maximumRows) {
    const QString beginning = streamText::singleLine(text.beginning);
    QString foreign = streamText::singleLine(text.foreign);
    const QString ending = streamText::singleLine(text.ending);
    const auto rowsOf = [&](const QString& line) {
        return wrapped(line, font, width, maximumRows);
    };
    const auto fits = [&](const QStringList& rows) { return rows.size() <= maximumRows; };

    const qsizetype room = roomFor(foreign, font, width * maximumRows);
    if (foreign.size() <= room) {
        if (QStringList rows = rowsOf(beginning + foreign + ending); fits(rows))
            return rows;
    }
    if (foreign.endsWith(u'…')) // cut already: one sign for both is enough
        foreign.chop(1);
    const auto shortened = [&](qsizetype kept) {
        return rowsOf(beginning + withoutMiddle(foreign, kept) + ending);
    };
    if (QStringList rows = shortened(0); !foreign.isEmpty() && fits(rows))
        return longestThatFits(rows, std::min(foreign.size() - 1, room), shortened, fits);
    const QString own = beginning + ending;
    const auto ownShortened = [&](qsizetype kept) { return rowsOf(withoutMiddle(own, kept)); };
    return longestThatFits(ownShortened(0), own.size() - 1, ownShortened, fits);
}
