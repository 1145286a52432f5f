#pragma once

#include "app/status_text.h"

#include <QFont>
#include <QStringList>

/// `text` as readable plain text in at most `maximumRows` rows (1 or more) that are `width` pixels
/// wide, broken between words where words allow it. Where that is too little room, the middle of
/// the foreign part gives way to "…", and only where even our own text does not fit, the middle of
/// that. Takes a time that does not depend on the length of the foreign part.
QStringList elidedRows(const StatusText& text, const QFont& font, int width, int maximumRows);

/// The number of rows that elidedRows() gives; found without looking for what to leave out.
int elidedRowCount(const StatusText& text, const QFont& font, int width, int maximumRows);
