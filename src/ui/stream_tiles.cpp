#include "ui/stream_tiles.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize smallestTile(120, 90);
// As high as the pages that hold nothing but a stream leave theirs in the lowest window.
constexpr QSize pageTile(120, 310);
constexpr QSize comboLargeTile(360, 240);
constexpr QSize comboSmallTile(140, 95);

QList<TileSpec> tileTable() {
    const QString waiting = u"Waiting for "_s;
    const QString rgb = waiting + streamName(Stream::Color);
    const QString ir = waiting + streamName(Stream::Infrared);
    const QString depth = waiting + streamName(Stream::Depth);
    return {
        {u"rgb"_s, View::Rgb, Stream::Color, true, true, smallestTile, rgb},
        {u"ir"_s, View::Ir, Stream::Infrared, false, true, smallestTile, ir},
        {u"depth"_s, View::Depth, Stream::Depth, false, true, smallestTile, depth},
        {u"combo_rgb"_s, View::Combo, Stream::Color, true, true, comboLargeTile, rgb},
        {u"combo_ir"_s, View::Combo, Stream::Infrared, false, false, comboSmallTile, ir},
        {u"combo_depth"_s, View::Combo, Stream::Depth, false, false, comboSmallTile, depth},
        {u"room_rgb"_s, View::Room, Stream::Color, true, true, pageTile, rgb},
        {u"follow_rgb"_s, View::Follow, Stream::Color, true, true, pageTile, rgb},
    };
}

} // namespace

const QList<TileSpec>& streamTiles() {
    static const QList<TileSpec> tiles = tileTable();
    return tiles;
}

QList<TileSpec> tilesOf(View view) {
    QList<TileSpec> tiles = streamTiles();
    tiles.removeIf([view](const TileSpec& tile) { return tile.view != view; });
    return tiles;
}

const TileSpec* tileNamed(const QString& key) {
    const QList<TileSpec>& tiles = streamTiles();
    const auto found =
        std::ranges::find_if(tiles, [&key](const TileSpec& tile) { return tile.key == key; });
    return found == tiles.cend() ? nullptr : &*found;
}

QString streamName(Stream stream) {
    switch (stream) {
    case Stream::Infrared:
        return u"IR stream"_s;
    case Stream::Depth:
        return u"depth stream"_s;
    default:
        return u"RGB stream"_s;
    }
}
