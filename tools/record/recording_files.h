#pragma once

#include "record/frame_encoding.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace record {

enum class Stream { Color, Infrared, Depth };

/// The files of a recording that is being made. The folder can be played at any time, also when the
/// process is killed: pictures have a name of their own until those of the other streams are there,
/// too, and get their final names and their line in timestamps.csv together.
///
/// Functions that fail return a text for a person, an empty one when all went well.
class RecordingFiles {
public:
    /// `colorKind` is the ending of colour pictures, "jpg" or "png"; without it there are none.
    RecordingFiles(const QString& folder, const std::optional<QString>& colorKind);
    ~RecordingFiles();
    RecordingFiles(const RecordingFiles&) = delete;
    RecordingFiles& operator=(const RecordingFiles&) = delete;

    /// Makes the folder, which may exist already if it is empty.
    QString begin();

    /// Writes one picture of moment `number`. May be called by several threads at a time, but by
    /// one for each picture.
    QString writePicture(Stream stream, std::int64_t number, const Bytes& bytes) const;
    /// Makes the pictures of a moment part of the recording, with their times in eighths of a
    /// millisecond. After a failure nothing of the moment is left.
    QString complete(std::int64_t number, std::int64_t time, std::int64_t colorTime);
    /// Removes what was written of a moment that cannot be completed.
    void discard(std::int64_t number) const;

    /// Replaces a text file in the folder, for example "recording.json". There is room for the last
    /// ones on a disk that has run full: see releaseReserve().
    QString writeText(const QString& name, const QByteArray& text) const;
    /// Gives the disk space back that was put aside for the texts at the end.
    void releaseReserve() const;
    /// Removes a recording without any moment, so that the same folder can be used again.
    void removeAll() const;

private:
    QString beginFiles();
    QString pictureFile(Stream stream, std::int64_t number) const;
    QString finishPictures(std::int64_t number) const;
    QString appendTime(std::int64_t number, std::int64_t time, std::int64_t colorTime);

    const QString folder;
    const std::optional<QString> colorKind;
    std::vector<Stream> streams;
    bool folderWasThere = false;
    int timesFile = -1;
    std::int64_t timesLength = 0;
};

} // namespace record
