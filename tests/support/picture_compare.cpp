#include "support/picture_compare.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace {

bool differ(QRgb a, QRgb b, int tolerance) {
    return qAbs(qRed(a) - qRed(b)) > tolerance || qAbs(qGreen(a) - qGreen(b)) > tolerance ||
           qAbs(qBlue(a) - qBlue(b)) > tolerance;
}

QString firstDifference(const QImage& actual, const QImage& expected, int tolerance) {
    if (actual.size() != expected.size()) {
        return u"sizes differ: %1x%2 against %3x%4"_s.arg(actual.width())
            .arg(actual.height())
            .arg(expected.width())
            .arg(expected.height());
    }
    QString first;
    int count = 0;
    for (int y = 0; y < actual.height(); ++y) {
        for (int x = 0; x < actual.width(); ++x) {
            const QRgb a = actual.pixel(x, y);
            const QRgb e = expected.pixel(x, y);
            if (!differ(a, e, tolerance))
                continue;
            if (count++ == 0) {
                first = u"pixel (%1, %2) is #%3, expected #%4"_s.arg(x)
                            .arg(y)
                            .arg(a & 0xffffffU, 6, 16, QChar(u'0'))
                            .arg(e & 0xffffffU, 6, 16, QChar(u'0'));
            }
        }
    }
    return count == 0 ? QString() : u"%1; %2 pixels differ"_s.arg(first).arg(count);
}

} // namespace

QString pictureDifference(const QImage& actual, const QImage& expected, const QString& name,
                          int tolerance) {
    const QString difference =
        firstDifference(actual.convertToFormat(QImage::Format_RGB32),
                        expected.convertToFormat(QImage::Format_RGB32), tolerance);
    if (difference.isEmpty())
        return difference;
    actual.save(name + u"-actual.png"_s);
    expected.save(name + u"-expected.png"_s);
    return u"%1: %2 (pictures written to %3)"_s.arg(name, difference, QDir::currentPath());
}
