#include "enroll/enroll_program.h"

#include "common/command_line.h"
#include "common/console.h"
#include "enroll/commands.h"
#include "enroll/enroll_window.h"
#include "enroll/sample_folder.h"
#include "enroll/sensor_feed.h"
#include "enroll/sitting_files.h"

#include <QApplication>
#include <QDateTime>
#include <memory>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

/// Writes what was not written by an earlier try.
WindowSession::Writer writerInto(const QString& folder, const QString& sitting) {
    auto writer = std::make_shared<SittingWriter>(folder, sitting);
    return [writer](const std::vector<KeptSample>& samples) {
        for (std::size_t i = std::size_t(writer->files().size()); i < samples.size(); ++i)
            if (const QString problem = writer->write(samples[i]); !problem.isEmpty())
                return problem;
        return QString();
    };
}

/// What the folder would hold together with the samples that are not written yet.
WindowSession::Surveyor surveyorOf(const QString& folder, const QString& sitting,
                                   double threshold) {
    return [=](const std::vector<KeptSample>& samples, SittingResult& result) {
        SampleCollection all = readableSamples(readSamples(folder));
        result.folder = coverageOf(all);
        for (const KeptSample& sample : samples) {
            addSample(result.folder, sample.distance);
            all.pictures.push_back(sample.face.input);
            all.sittings.append(sample.light > 1 ? secondLightOf(sitting) : sitting);
        }
        result.folder.sittings = countSittings(all.sittings);
        result.rehearsal = rehearse(distanceTable(all.pictures), all.sittings, threshold);
    };
}

/// The window and the sensor that feeds it.
class Program {
public:
    Program(const QString& folder, const QString& sitting, Detectors tools)
        : detectors(std::move(tools)),
          window(WindowSession(detectors.options, writerInto(folder, sitting),
                               surveyorOf(folder, sitting, detectors.options.candidateThreshold))) {
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
    line.addText(u"sitting"_s, u"NAME"_s, u"The sitting's name; without it the date and time."_s);
    line.addText(u"into"_s, u"DIR"_s, u"Where the samples go, instead of faces/tavin."_s);
    if (const std::optional<int> status = line.read(arguments))
        return *status;
    const QString folder = line.text(u"into"_s).value_or(defaultSamplesFolder());
    const QString sitting =
        line.text(u"sitting"_s).value_or(newSittingName(folder, QDateTime::currentDateTime()));
    if (!isSittingName(sitting))
        return line.refuse(u"A sitting's name is made of letters, digits, - and _."_s);
    if (const QString obstacle = obstacleFor(folder, sitting); !obstacle.isEmpty()) {
        console.complain(obstacle);
        return tool::Failed;
    }
    std::optional<Detectors> detectors = loadDetectors(Options());
    if (!detectors) {
        console.complain(cascadeSentence());
        return tool::Failed;
    }
    return Program(folder, sitting, std::move(*detectors)).run();
}

} // namespace enroll
