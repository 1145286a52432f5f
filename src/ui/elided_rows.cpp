#include "ui/elided_rows.h"

#include "ui/stream_overlay_text.h"

#include <QFontMetrics>
#include <QTextLayout>
#include <QTextOption>
#include <algorithm>
#include <optional>
#include <utility>

namespace {

/// The elided part is found to this many characters: each try lays a text out.
constexpr int step = 8;

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
/// where no more do. `maximum` being a guess from the room there is, it begins not far below.
template <class RowsOf, class Fits>
QStringList longestThatFits(QStringList rows, qsizetype maximum, const RowsOf& rowsOf,
                            const Fits& fits) {
    qsizetype low = 0;
    qsizetype high = maximum / step;
    for (qsizetype middle = high * 3 / 4; low < high; middle = low + (high - low + 1) / 2) {
        if (QStringList tried = rowsOf(middle * step); fits(tried)) {
            rows = std::move(tried);
            low = middle;
        } else {
            high = middle - 1;
        }
    }
    return rows;
}

/// The parts of a text as they are shown, and the limits of the place for them.
struct Rows {
    Rows(const StatusText& text, const QFont& rowFont, int rowWidth, int rowLimit)
        : beginning(streamText::singleLine(text.beginning)),
          foreign(streamText::singleLine(text.foreign)),
          ending(streamText::singleLine(text.ending)), font(rowFont), width(rowWidth),
          maximum(rowLimit), room(roomFor(foreign, font, width * maximum)) {}

    QStringList of(const QString& line) const { return wrapped(line, font, width, maximum); }
    bool fit(const QStringList& rows) const { return rows.size() <= maximum; }

    /// The rows of the whole text, where it fits.
    std::optional<QStringList> ofAll() const {
        if (foreign.size() > room)
            return std::nullopt;
        QStringList rows = of(beginning + foreign + ending);
        return fit(rows) ? std::optional(std::move(rows)) : std::nullopt;
    }

    QString beginning;
    QString foreign;
    QString ending;
    const QFont& font;
    int width;
    int maximum;
    qsizetype room;
};

} // namespace

QStringList elidedRows(const StatusText& text, const QFont& font, int width, int maximumRows) {
    Rows rows(text, font, width, maximumRows);
    if (const auto all = rows.ofAll())
        return *all;
    const auto fits = [&](const QStringList& tried) { return rows.fit(tried); };
    if (rows.foreign.endsWith(u'…')) // cut already: one sign for both is enough
        rows.foreign.chop(1);
    const auto shortened = [&](qsizetype kept) {
        return rows.of(rows.beginning + withoutMiddle(rows.foreign, kept) + rows.ending);
    };
    if (const QStringList least = shortened(0); !rows.foreign.isEmpty() && rows.fit(least))
        return longestThatFits(least, std::min(rows.foreign.size() - 1, rows.room), shortened,
                               fits);
    const QString own = rows.beginning + rows.ending;
    const auto ownShortened = [&](qsizetype kept) { return rows.of(withoutMiddle(own, kept)); };
    return longestThatFits(ownShortened(0), own.size() - 1, ownShortened, fits);
}

int elidedRowCount(const StatusText& text, const QFont& font, int width, int maximumRows) {
    const auto all = Rows(text, font, width, maximumRows).ofAll();
    return all ? int(all->size()) : maximumRows; // what is shortened fills all the rows
}
