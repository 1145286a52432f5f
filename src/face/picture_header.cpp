#include "face/picture_header.h"

#include <QByteArrayView>
#include <QDataStream>
#include <QImageReader>
#include <QtEndian>

namespace {

/// Within these bytes a JPEG 2000 file says its size.
constexpr qint64 searchedBytes = 64 * 1024;

/// A TIFF file points to a list of tagged values, anywhere in the file; 256 and 257 are the width
/// and the height, of 16 or 32 bits (TIFF 6.0, section 2).
QSize tiffSize(QIODevice& file, bool littleEndian) {
    QDataStream in(&file);
    in.setByteOrder(littleEndian ? QDataStream::LittleEndian : QDataStream::BigEndian);
    quint32 listOffset = 0;
    quint16 count = 0;
    file.seek(4);
    in >> listOffset;
    file.seek(listOffset);
    in >> count;
    QSize size;
    for (; count > 0 && in.status() == QDataStream::Ok; --count) {
        quint16 tag = 0;
        quint16 type = 0;
        quint32 values = 0;
        quint32 value = 0;
        in >> tag >> type >> values >> value;
        constexpr quint16 typeShort = 3; // left-justified in its four bytes
        if (type == typeShort)
            value = littleEndian ? value & 0xffff : value >> 16;
        const auto pixels = static_cast<int>(qMin<quint32>(value, INT_MAX));
        if (tag == 256)
            size.setWidth(pixels);
        else if (tag == 257)
            size.setHeight(pixels);
    }
    return size;
}

/// A JPEG 2000 codestream, bare or in the boxes of a JP2 file, starts with the markers SOC and SIZ.
/// From the latter, two bytes of length and two of capabilities are followed by the right and lower
/// end of the picture and its left and upper start (ISO/IEC 15444-1, A.5.1).
QSize jpeg2000Size(QByteArrayView bytes) {
    const qsizetype start = bytes.indexOf(QByteArrayView("\xff\x4f\xff\x51", 4));
    constexpr qsizetype endAt = 8;
    constexpr qsizetype startAt = 16;
    if (start < 0 || bytes.size() < start + startAt + 8)
        return {};
    const auto number = [&bytes, start](qsizetype at) {
        return qint64{qFromBigEndian<quint32>(bytes.data() + start + at)};
    };
    const auto length = [&number](qsizetype axis) {
        const qint64 pixels = number(endAt + axis) - number(startAt + axis);
        return static_cast<int>(qBound(qint64{0}, pixels, qint64{INT_MAX}));
    };
    return {length(0), length(4)};
}

} // namespace

QSize promisedSize(QIODevice& file) {
    const QByteArray start = file.peek(searchedBytes);
    if (const QSize known = QImageReader(&file).size(); !known.isEmpty())
        return known;
    if (start.startsWith(QByteArrayView("II*\0", 4)))
        return tiffSize(file, true);
    if (start.startsWith(QByteArrayView("MM\0*", 4)))
        return tiffSize(file, false);
    return jpeg2000Size(start);
}
