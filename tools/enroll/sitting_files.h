#pragma once

#include "enroll/manifest.h"

#include <QStringList>

namespace enroll {

/// Writes a file for its owner only, beside its place and then renamed: it is there whole or not at
/// all. Returns one sentence when it is not, empty otherwise.
QString writeWhole(const QString& path, const QByteArray& content);

/// Whether a sitting may be called so: letters, digits, '-' and '_', at most 60 of them.
bool isSittingName(const QString& name);

/// "2026-11-21-1617" from the time, with "-2" and so on when that sitting exists in the folder.
QString newSittingName(const QString& samplesFolder, const QDateTime& now);

/// The name of a sitting's second light, which has a folder of its own.
QString secondLightOf(const QString& sitting);

/// One sentence about why nothing could be written there, before anybody stands in front of the
/// sensor for it; empty when nothing speaks against it. Creates nothing.
QString obstacleFor(const QString& samplesFolder, const QString& sitting);

/// Writes the samples of one sitting. Folders are made when the first sample comes, for their owner
/// only (0700); files (0600) are written beside their place and renamed, so that each is there
/// whole or not at all. Nothing that exists is ever replaced except the sitting's manifest.
class SittingWriter {
public:
    SittingWriter(const QString& samplesFolder, const QString& sitting);

    /// Writes one sample, then the manifest. Returns one sentence when that failed, and then the
    /// sample is not there; empty otherwise.
    QString write(const KeptSample& sample, const QString& source = {});

    /// What was written, as paths.
    const QStringList& files() const { return written; }

private:
    /// A folder and what its manifest will say.
    struct Target {
        QString folder;
        Manifest manifest;
        bool prepared = false;
    };

    QString prepare(Target& target);

    QString samplesFolder;
    Target firstLight;
    Target secondLight;
    QStringList written;
};

/// Moves a sample out of the scan: from faces/tavin/monday/a.png to faces/set-aside/monday/a.png,
/// under another name where that one is taken. `wanted` is its path or, where no such file exists,
/// its path in the samples' folder. `movedTo` gets the new path. Returns one sentence when it stays
/// where it is, empty otherwise.
QString setAside(const QString& samplesFolder, const QString& wanted, QString& movedTo);

} // namespace enroll
