#pragma once

#include <QList>
#include <QString>

/// One selectable view of the window.
struct ViewSpec {
    QString key;         ///< Internal name, lower case.
    QString buttonText;  ///< Text of the view button.
    QString title;       ///< Heading of the page.
    QString description; ///< Line under the heading.
};

/// The seven views, in the order of the buttons, of the pages and of the keys 1 to 7.
QList<ViewSpec> viewSpecs();

/// Index of the first view whose key is exactly `key`; -1 where there is none.
int viewIndex(const QList<ViewSpec>& views, const QString& key);

/// Key of the view that a keyboard key (a Qt::Key code, whatever the modifiers) selects; empty for
/// keys that select none.
QString viewKeyFor(const QList<ViewSpec>& views, int keyboardKey);

/// Placeholder of the tiles that show the stream `tileKey`, for example of "rgb" or "combo_ir".
QString streamPlaceholder(const QString& tileKey);
