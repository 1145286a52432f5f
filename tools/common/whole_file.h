#pragma once

#include <QString>

#include <cstddef>

namespace tool {

/// Writes a file whole, over one of the same name. Returns what went wrong, for a person, empty
/// when nothing did; a file that is not whole is not left behind.
QString writeWholeFile(const QString& name, const char* bytes, std::size_t count);

/// Writes all bytes to an open file; false when the system refuses, which errno then tells.
bool writeAll(int file, const char* bytes, std::size_t count);

/// The sentence about a file that cannot be written, with the system's reason out of errno.
QString writeFailure(const QString& name);

} // namespace tool
