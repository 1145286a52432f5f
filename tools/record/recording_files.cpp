#include "record/recording_files.h"

#include "common/whole_file.h"
#include "record/time_line.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace record {

using namespace Qt::StringLiterals;

namespace {

/// Enough for recording.json on any file system.
constexpr int reserveBytes = 64 * 1024;
constexpr auto unfinished = ".part"_L1;
constexpr auto reserveName = "reserve.part"_L1;

QString renameFile(const QString& from, const QString& to) {
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0)
        return tool::writeFailure(to);
    return {};
}

QString makeFolder(const QString& folder) {
    if (::mkdir(QFile::encodeName(folder).constData(), 0777) != 0)
        return tool::writeFailure(folder);
    return {};
}

QString folderOf(Stream stream) {
    switch (stream) {
    case Stream::Color:
        return u"color"_s;
    case Stream::Infrared:
        return u"ir"_s;
    case Stream::Depth:
        break;
    }
    return u"depth"_s;
}

} // namespace

RecordingFiles::RecordingFiles(const QString& recordingFolder,
                               const std::optional<QString>& kindOfColor)
    : folder(recordingFolder), colorKind(kindOfColor), streams{Stream::Infrared, Stream::Depth} {
    if (colorKind)
        streams.push_back(Stream::Color);
}

RecordingFiles::~RecordingFiles() {
    if (timesFile >= 0)
        ::close(timesFile);
    releaseReserve();
}

QString RecordingFiles::begin() {
    const QFileInfo info(folder);
    folderWasThere = info.exists();
    if (folderWasThere && !info.isDir())
        return u"\"%1\" is not a folder."_s.arg(folder);
    constexpr auto everything =
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    if (!QDir(folder).isEmpty(everything))
        return u"\"%1\" is not empty; a recording needs a new or an empty folder."_s.arg(folder);
    if (!folderWasThere)
        if (const QString failure = makeFolder(folder); !failure.isEmpty())
            return failure;
    // Making the first one also tells whether another recorder has just begun in the same folder,
    // whose files must stay.
    const QString first = folder + u'/' + folderOf(streams.front());
    if (const QString failure = makeFolder(first); !failure.isEmpty())
        return failure;
    QString failure = beginFiles();
    if (!failure.isEmpty())
        removeAll();
    return failure;
}

QString RecordingFiles::beginFiles() {
    for (std::size_t at = 1; at < streams.size(); ++at) {
        const QString place = folder + u'/' + folderOf(streams[at]);
        if (const QString failure = makeFolder(place); !failure.isEmpty())
            return failure;
    }
    const QByteArray reserve(reserveBytes, 'x');
    if (const QString failure = writeText(reserveName, reserve); !failure.isEmpty())
        return failure;
    const QString name = folder + u"/timestamps.csv"_s;
    timesFile = ::open(QFile::encodeName(name).constData(),
                       O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0666);
    const QByteArray heading =
        colorKind ? "number,milliseconds,color_milliseconds\n" : "number,milliseconds\n";
    if (timesFile < 0 ||
        !tool::writeAll(timesFile, heading.constData(), static_cast<std::size_t>(heading.size())))
        return tool::writeFailure(name);
    timesLength = heading.size();
    return {};
}

QString RecordingFiles::writePicture(Stream stream, std::int64_t number, const Bytes& bytes) const {
    return tool::writeWholeFile(pictureFile(stream, number) + unfinished,
                                reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

QString RecordingFiles::complete(std::int64_t number, std::int64_t time, std::int64_t colorTime) {
    QString failure = finishPictures(number);
    if (failure.isEmpty())
        failure = appendTime(number, time, colorTime);
    if (!failure.isEmpty())
        discard(number);
    return failure;
}

QString RecordingFiles::finishPictures(std::int64_t number) const {
    for (const Stream stream : streams) {
        const QString file = pictureFile(stream, number);
        if (const QString failure = renameFile(file + unfinished, file); !failure.isEmpty())
            return failure;
    }
    return {};
}

QString RecordingFiles::appendTime(std::int64_t number, std::int64_t time, std::int64_t colorTime) {
    const auto ms = [](std::int64_t stamps) {
        return QByteArray::number(static_cast<double>(stamps) * msPerStamp, 'f', 3);
    };
    QByteArray line = QByteArray::number(static_cast<qlonglong>(number)) + ',' + ms(time);
    if (colorKind)
        line += ',' + ms(colorTime);
    line += '\n';
    if (tool::writeAll(timesFile, line.constData(), static_cast<std::size_t>(line.size()))) {
        timesLength += line.size();
        return {};
    }
    const QString failure = tool::writeFailure(folder + u"/timestamps.csv"_s);
    // Half a line would make the whole recording unreadable. Shortening a file needs no space.
    if (::ftruncate(timesFile, timesLength) != 0)
        return tool::writeFailure(folder + u"/timestamps.csv"_s);
    return failure;
}

void RecordingFiles::discard(std::int64_t number) const {
    for (const Stream stream : streams) {
        const QString file = pictureFile(stream, number);
        QFile::remove(file);
        QFile::remove(file + unfinished);
    }
}

QString RecordingFiles::writeText(const QString& name, const QByteArray& text) const {
    QSaveFile file(folder + u'/' + name);
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit())
        return {};
    return u"\"%1\" cannot be written: %2"_s.arg(file.fileName(), file.errorString());
}

void RecordingFiles::releaseReserve() const {
    QFile::remove(folder + u'/' + reserveName);
}

void RecordingFiles::removeAll() const {
    releaseReserve();
    for (const QString& name : {u"timestamps.csv"_s, u"recording.json"_s, u"calibration.json"_s})
        QFile::remove(folder + u'/' + name);
    for (const Stream stream : streams)
        QDir().rmdir(folder + u'/' + folderOf(stream));
    if (!folderWasThere)
        QDir().rmdir(folder);
}

QString RecordingFiles::pictureFile(Stream stream, std::int64_t number) const {
    const QString kind = stream == Stream::Color ? colorKind.value_or(QString()) : u"png"_s;
    return u"%1/%2/%3.%4"_s.arg(folder, folderOf(stream)).arg(number, 6, 10, QChar(u'0')).arg(kind);
}

} // namespace record
