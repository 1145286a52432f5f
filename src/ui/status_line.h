#pragma once

#include "app/status_text.h"

#include <QLabel>
#include <QStringList>

/// A status line under the views. It may carry texts of drivers and of other programs: text() is
/// the whole of it, and what is measured and painted is one bounded line of plain text in a few
/// whole rows that keep its beginning and its ending. The tool tip has all of that line.
class StatusLine : public QLabel {
    Q_OBJECT

public:
    /// `purpose` tells a screen reader which line this is.
    explicit StatusLine(const QString& purpose, QWidget* parent = nullptr);

    void setText(const StatusText& newText);

    /// The line is never higher than this many rows, at least 1; 3 until it is set.
    void setMaximumRows(int rows);

    /// What is painted at the present width, row by row.
    const QStringList& rows() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    int roomIn(int width) const;
    int heightOf(qsizetype rowCount) const;

    StatusText shownText;
    int maximumRows = 3;
    /// A row that a text needed once stays until the width changes: views must not jump up and down
    /// when a number in a text gains a digit and loses it again.
    qsizetype keptRows = 0;
    // What rows() found, and for which width; -1 when it has to be found again.
    mutable int measuredWidth = -1;
    mutable QStringList measuredRows;
};
