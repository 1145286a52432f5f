#pragma once

#include "ui/view_specs.h"

#include <QList>
#include <QSize>
#include <QString>

/// The image streams of the sensor.
enum class Stream { Color, Infrared, Depth };

/// As people call it, for example "RGB stream".
QString streamName(Stream stream);

/// One place where a stream is shown.
struct TileSpec {
    QString key;         ///< Name of the tile in the window's table.
    View view;           ///< The view whose page it stands on.
    Stream stream;       ///< What it shows.
    bool overlays;       ///< Boxes round people; never on infrared and depth.
    bool voice;          ///< Speaker lights and voice text.
    QSize minimumSize;   ///< Logical pixels.
    QString placeholder; ///< Shown until the first image comes.
};

/// Every tile of the window, in the order in which they are handed new images.
const QList<TileSpec>& streamTiles();

/// The tiles on the page of `view`, in the order of the table.
QList<TileSpec> tilesOf(View view);

/// The tile with exactly this key; null where there is none.
const TileSpec* tileNamed(const QString& key);
