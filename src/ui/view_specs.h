#pragma once

#include <QList>
#include <QString>
#include <optional>

/// The views, in the order of the buttons, of the pages and of the keys 1 to 7.
enum class View { Rgb, Ir, Depth, Skeletal, Combo, Room, Follow };

/// One selectable view of the window.
struct ViewSpec {
    QString key;         ///< Internal name, lower case.
    QString buttonText;  ///< Text of the view button.
    QString title;       ///< Heading of the page.
    QString description; ///< Line under the heading.
    View view = View::Rgb;
};

/// The seven views, in the order of View.
QList<ViewSpec> viewSpecs();

/// The view whose key is exactly `key`, if there is one.
std::optional<View> viewNamed(const QString& key);

/// The view that a keyboard key (a Qt::Key code, whatever the modifiers) selects, if any.
std::optional<View> viewForKeyboardKey(int keyboardKey);
