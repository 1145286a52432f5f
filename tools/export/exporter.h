#pragma once

#include "common/console.h"
#include "export/export_format.h"
#include "export/recorded_moments.h"
#include "export/registration.h"

#include <QString>

#include <functional>
#include <memory>

namespace exporting {

/// Writes what a recording shows, undistorted, registered and no longer mirrored, for other
/// programs. Its functions return the status to end with: tool::Succeeded, or tool::Failed after a
/// complaint.
class Exporter {
public:
    /// Nothing when the recording cannot be exported; `complaint` then says why.
    static std::unique_ptr<Exporter> open(const QString& folder, QString& complaint);

    /// Writes all moments into `target`, a new or empty folder, until `stopped` says so.
    int exportAll(Format format, const QString& target, tool::Console& console,
                  const std::function<bool()>& stopped) const;
    /// Writes the points of the moment with that number into the file `target`.
    int exportPoints(qint64 number, const QString& target, tool::Console& console) const;

    /// How the pictures are registered, for the person.
    QString description() const { return registration->description(); }

private:
    Exporter(RecordedMoments recording, std::unique_ptr<Registration> registration);

    RegisteredPictures moment(std::size_t at) const;
    Camera camera() const;
    QString writeMoment(const Layout& layout, const QString& target, const QString& name,
                        std::size_t at) const;

    RecordedMoments recording;
    std::unique_ptr<Registration> registration;
};

} // namespace exporting
