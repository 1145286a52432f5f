#pragma once

#include <QString>

#include <functional>

namespace doctor {

/// Where the checks look.
struct Places {
    /// Put before every path of the system: sysfs, device folder, proc, udev rules, cascades. Empty
    /// for the machine itself; tests prepare a tree elsewhere.
    QString root;
    QString home;   ///< the person's home folder, where the voice service leaves its files
    QString folder; ///< the folder that the program is started in
    /// Whether this process may open a path in a mode of access(2), R_OK and so on.
    std::function<bool(const QString& path, int mode)> mayAccess;

    /// A path of the system below the root.
    QString inSystem(const QString& path) const { return root + path; }
};

/// The machine itself.
Places thisMachine(const QString& home, const QString& folder);

/// The beginning of a text file, up to 1 MiB; empty when it cannot be read.
QByteArray contentOf(const QString& path);
/// A file with one short value, as in sysfs, without the line end.
QString valueIn(const QString& path);

} // namespace doctor
