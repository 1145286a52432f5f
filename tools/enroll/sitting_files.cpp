#include "enroll/sitting_files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <cerrno>
#include <cstring>
#include <opencv2/imgcodecs.hpp>
#include <sys/stat.h>
#include <unistd.h>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

constexpr QFile::Permissions ownerOnly = QFile::ReadOwner | QFile::WriteOwner;

QString reasonOf(int error) {
    return QString::fromLocal8Bit(std::strerror(error));
}

/// Whether anything has this name, a link to nowhere included.
bool isTaken(const QString& path) {
    const QFileInfo info(path);
    return info.isSymLink() || info.exists();
}

/// Why a folder cannot be used or made at a path; empty when it can.
QString folderObstacle(const QString& path) {
    const QFileInfo info(path);
    if (info.isDir()) {
        if (access(QFile::encodeName(path).constData(), W_OK | X_OK) == 0)
            return {};
        return u"%1 cannot be written to (%2): choose another folder or make it yours."_s.arg(
            path, reasonOf(errno));
    }
    if (info.isSymLink())
        return u"%1 is a link to nowhere: remove it."_s.arg(path);
    if (info.exists())
        return u"%1 is a file where a folder has to be: move it away."_s.arg(path);
    return folderObstacle(QFileInfo(QDir::cleanPath(info.absoluteFilePath())).path());
}

/// Makes a folder and its missing ancestors, for their owner only. One sentence when that fails.
QString makeFolder(const QString& path) {
    if (QFileInfo(path).isDir())
        return {};
    const QString parent = QFileInfo(QDir::cleanPath(QFileInfo(path).absoluteFilePath())).path();
    if (const QString problem = makeFolder(parent); !problem.isEmpty())
        return problem;
    if (mkdir(QFile::encodeName(path).constData(), 0700) == 0 || errno == EEXIST)
        return folderObstacle(path);
    return u"The folder %1 cannot be made (%2): make it by hand, or choose another."_s.arg(
        path, reasonOf(errno));
}

QString linkedSitting(const QString& folder) {
    return u"%1 is a link, which the Control Center does not follow: choose another --sitting."_s
        .arg(folder);
}

/// A name for the next sample that nothing in the folder has.
QString freeName(const QString& folder, const QString& start) {
    for (int number = 1;; ++number) {
        const QString name = u"%1-%2.png"_s.arg(start).arg(number, 2, 10, QLatin1Char('0'));
        if (!isTaken(QDir(folder).filePath(name)))
            return name;
    }
}

QByteArray pngOf(const cv::Mat& picture) {
    std::vector<uchar> bytes;
    cv::imencode(".png", picture, bytes);
    return {reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size())};
}

} // namespace

QString writeWhole(const QString& path, const QByteArray& content) {
    QSaveFile file(path);
    // The library's own commit() does not notice when only a part of its buffer fitted on the disk.
    const bool done = file.open(QIODevice::WriteOnly) && file.setPermissions(ownerOnly) &&
                      file.write(content) == content.size() && file.flush() &&
                      file.size() == content.size() && file.commit();
    if (done)
        return {};
    const QString reason = file.error() == QFile::NoError || file.error() == QFile::WriteError
                               ? u"the disk may be full"_s
                               : file.errorString();
    return u"%1 cannot be written (%2) and nothing of it was left behind: make room for it, or choose another place."_s
        .arg(path, reason);
}

bool isSittingName(const QString& name) {
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(u"[A-Za-z0-9_-]{1,60}"_s));
    return pattern.match(name).hasMatch();
}

QString newSittingName(const QString& samplesFolder, const QDateTime& now) {
    const QString start = now.toString(u"yyyy-MM-dd-HHmm"_s);
    QString name = start;
    for (int number = 2; isTaken(QDir(samplesFolder).filePath(name)); ++number)
        name = start + u'-' + QString::number(number);
    return name;
}

QString secondLightOf(const QString& sitting) {
    return sitting + u"-second-light"_s;
}

QString obstacleFor(const QString& samplesFolder, const QString& sitting) {
    const QString folder = QDir(samplesFolder).filePath(sitting);
    if (QFileInfo(folder).isSymLink())
        return linkedSitting(folder);
    return folderObstacle(folder);
}

SittingWriter::SittingWriter(const QString& folder, const QString& sitting)
    : samplesFolder(folder), firstLight{QDir(folder).filePath(sitting), {sitting, 1, {}}, false},
      secondLight{
          QDir(folder).filePath(secondLightOf(sitting)), {secondLightOf(sitting), 2, {}}, false} {}

QString SittingWriter::write(const KeptSample& sample, const QString& source) {
    Target& target = sample.light > 1 ? secondLight : firstLight;
    if (const QString problem = prepare(target); !problem.isEmpty())
        return problem;
    const QByteArray content = pngOf(sample.face.input);
    const QString start = distanceName(sample.distance) + u'-' + poseName(sample.pose);
    const QString name = freeName(target.folder, start);
    const QString path = QDir(target.folder).filePath(name);
    if (const QString problem = writeWhole(path, content); !problem.isEmpty())
        return problem;
    Manifest manifest = target.manifest;
    manifest.samples.append(entryFor(sample, name, content, source));
    const QString manifestPath = QDir(target.folder).filePath(manifestName);
    if (const QString problem = writeWhole(manifestPath, toJson(manifest)); !problem.isEmpty()) {
        QFile::remove(path);
        return problem;
    }
    target.manifest = std::move(manifest);
    written.append(path);
    return {};
}

/// Makes the folder, and takes over the manifest of a sitting that is continued.
QString SittingWriter::prepare(Target& target) {
    if (target.prepared)
        return {};
    if (QFileInfo(target.folder).isSymLink())
        return linkedSitting(target.folder);
    if (const QString problem = makeFolder(target.folder); !problem.isEmpty())
        return problem;
    const QString path = QDir(target.folder).filePath(manifestName);
    if (isTaken(path)) {
        QFile file(path);
        const auto earlier =
            file.open(QIODevice::ReadOnly) ? manifestFrom(file.readAll()) : std::nullopt;
        if (!earlier)
            return u"%1 is damaged: choose another --sitting, or move it away."_s.arg(path);
        target.manifest.samples = earlier->samples;
    }
    target.prepared = true;
    return {};
}

QString setAside(const QString& samplesFolder, const QString& wanted, QString& movedTo) {
    const QString samples = QFileInfo(samplesFolder).canonicalFilePath();
    const QString file = isTaken(wanted) ? wanted : QDir(samplesFolder).filePath(wanted);
    const QFileInfo info(file);
    if (!isTaken(file) || info.isDir())
        return u"%1 is no file: `lumeno-enroll check` names the samples."_s.arg(wanted);
    // A link is moved itself, so that only its folder is resolved.
    const QString folder = QFileInfo(info.absolutePath()).canonicalFilePath();
    if (samples.isEmpty() || (folder != samples && !folder.startsWith(samples + u'/')))
        return u"%1 does not lie in %2: only samples are set aside."_s.arg(wanted, samplesFolder);
    const QString from = QDir(folder).filePath(info.fileName());
    const QString target =
        QDir(QFileInfo(samples).path()).filePath(u"set-aside"_s) + folder.mid(samples.size());
    if (const QString problem = makeFolder(target); !problem.isEmpty())
        return problem;
    QString name = info.fileName();
    for (int number = 2; isTaken(QDir(target).filePath(name)); ++number)
        name = u"%1-%2.%3"_s.arg(info.completeBaseName(), QString::number(number), info.suffix());
    movedTo = QDir(target).filePath(name);
    // Never replaces a file, and moves between file systems too.
    if (QFile moving(from); !moving.rename(movedTo))
        return u"%1 cannot be moved to %2 (%3): make room there, or make the folder yours."_s.arg(
            wanted, movedTo, moving.errorString());
    return {};
}

} // namespace enroll
