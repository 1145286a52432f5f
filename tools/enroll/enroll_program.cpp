#include "enroll/enroll_program.h"

#include "common/command_line.h"
#include "common/console.h"
#include "enroll/commands.h"
#include "enroll/enroll_window.h"
#include "enroll/folder_facts.h"
#include "enroll/sample_folder.h"
#include "enroll/sensor_feed.h"
#include "enroll/sitting_files.h"
#include "enroll/sitting_place.h"

#include <QApplication>
#include <memory>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

/// Writes what was not written by an earlier try.
WindowSession::Writer writerInto(const SittingPlace& place) {
    auto writer = std::make_shared<SittingWriter>(place.folder, place.sitting);
    return [writer](const std::vector<KeptSample>& samples) {
        for (std::size_t i = std::size_t(writer->files().size()); i < samples.size(); ++i)
            if (const QString problem = writer->write(samples[i]); !problem.isEmpty())
                return problem;
        return QString();
    };
}

/// What the folder would hold together with the samples that are not written yet.
WindowSession::Surveyor surveyorOf(const SittingPlace& place, double threshold) {
    return [=](const std::vector<KeptSample>& samples, SittingResult& result) {
        SampleCollection all = readableSamples(readSamples(place.folder));
        result.folder = coverageOf(all);
        for (const KeptSample& sample : samples) {
            addSample(result.folder, sample.distance);
            all.pictures.push_back(sample.face.input);
            all.sittings.append(sample.light > 1 ? secondLightOf(place.sitting) : place.sitting);
        }
        result.folder.sittings = countSittings(all.sittings);
        result.rehearsal = rehearse(distanceTable(all.pictures), all.sittings, threshold);
    };
}

/// The window and the sensor that feeds it.
class Program {
public:
    Program(const SittingPlace& place, Detectors tools)
        : detectors(std::move(tools)),
          window(WindowSession(detectors.options, writerInto(place),
                               surveyorOf(place, detectors.options.candidateThreshold))) {
        QObject::connect(&window, &EnrollWindow::sensorWanted, &window, [this] { openSensor(); });
    }

    int run() {
        window.show();
        openSensor();
        return QApplication::exec();
    }

private:
    /// Each try opens the sensor anew: a worker runs once.
    void openSensor() {
        feed = std::make_unique<SensorFeed>(detectors, false);
        QObject::connect(feed.get(), &SensorFeed::pictureReady, &window,
                         &EnrollWindow::showPicture);
        QObject::connect(feed.get(), &SensorFeed::looked, &window, &EnrollWindow::onLook);
        QObject::connect(feed.get(), &SensorFeed::failed, &window, &EnrollWindow::onFailed);
        QObject::connect(feed.get(), &SensorFeed::silent, &window, &EnrollWindow::onSilent);
        feed->start();
    }

    Detectors detectors;
    EnrollWindow window;
    std::unique_ptr<SensorFeed> feed; ///< Goes before the window that it feeds.
};

} // namespace

int runWindow(const QStringList& arguments, tool::Console& console) {
    tool::CommandLine line(console, commandsHelp());
    addSittingOptions(line);
    if (const std::optional<int> status = line.read(arguments))
        return *status;
    const std::variant<SittingPlace, int> place = sittingPlace(line, console);
    if (const int* status = std::get_if<int>(&place))
        return *status;
    std::optional<Detectors> detectors = detectorsOrComplaint(console);
    if (!detectors)
        return tool::Failed;
    return Program(std::get<SittingPlace>(place), std::move(*detectors)).run();
}

} // namespace enroll
