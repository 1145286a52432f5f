#pragma once

#include <QImage>
#include <QString>

/// Compares two pictures as 32-bit RGB. Returns an empty string when they have the same size and no
/// channel of any pixel differs by more than `tolerance` (0 to 255); otherwise a sentence with the
/// first difference and the number of differing pixels, after writing both pictures as
/// "<name>-actual.png" and "<name>-expected.png" into the folder of the test's working directory.
QString pictureDifference(const QImage& actual, const QImage& expected, const QString& name,
                          int tolerance = 0);
