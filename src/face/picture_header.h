#pragma once

#include <QIODevice>
#include <QSize>

/// Width and height in pixels that a picture file's header promises, read without decoding the
/// picture: of every kind that Qt knows, and of TIFF and JPEG 2000. Empty where it cannot be told.
/// `file` is open for reading and can seek; its position is changed.
QSize promisedSize(QIODevice& file);
