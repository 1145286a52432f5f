#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

/// A home folder and a working folder of a test's own. While it lives HOME points to the one and
/// the process works in the other; both are removed at its end and the previous ones come back.
class TemporaryPlace {
public:
    TemporaryPlace();
    ~TemporaryPlace();
    TemporaryPlace(const TemporaryPlace&) = delete;
    TemporaryPlace& operator=(const TemporaryPlace&) = delete;

    QString home() const;
    QString work() const;

private:
    QTemporaryDir folder;
    QByteArray previousHome;
    QString previousWork;
};
