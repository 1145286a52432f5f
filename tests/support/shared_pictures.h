#pragma once

#include <QString>

/// Absolute path of a real picture or recording beside the checkout, for example
/// "faces/portrait.png"; empty where it is missing, and the test that wants it skips.
QString sharedPicture(const QString& relativePath);
