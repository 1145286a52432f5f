#include "common/command_line.h"
#include "common/console.h"
#include "common/stop_signals.h"
#include "enroll/commands.h"
#include "enroll/folder_facts.h"
#include "enroll/hints.h"
#include "enroll/report.h"
#include "enroll/sensor_feed.h"
#include "enroll/sitting_files.h"
#include "enroll/sitting_place.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QTimer>
#include <array>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

constexpr int tickMs = 250;
constexpr qint64 mostSeconds = 3600;

struct TakeOptions {
    SittingPlace place;
    SittingMode mode = SittingMode::Guided;
    std::optional<qint64> seconds; ///< From the first picture on.
    std::chrono::seconds patience = usualPatience;
};

/// One sitting on the command line: shows the next sentence on one line, writes each sample as it
/// is kept, and ends with the report.
class TakeRun {
public:
    TakeRun(const TakeOptions& take, Detectors tools, tool::Console& output)
        : wanted(take), options(tools.options), console(output),
          feed(std::move(tools), false, take.patience),
          writer(take.place.folder, take.place.sitting) {
        QObject::connect(&feed, &SensorFeed::looked, &feed,
                         [this](const FrameLook& look) { onLook(look); });
        QObject::connect(&feed, &SensorFeed::failed, &feed,
                         [this](const QString& sentence) { giveUp(noSensor, sentence); });
        QObject::connect(&feed, &SensorFeed::silent, &feed,
                         [this] { giveUp(noSensor, silenceSentence()); });
        QObject::connect(&stops, &tool::StopSignals::stopRequested, &feed, [this] { finish(); });
        QObject::connect(&ticks, &QTimer::timeout, &feed, [this] { onTick(); });
    }

    int run() {
        console.progress(u"Opening the sensor"_s);
        feed.start();
        ticks.start(tickMs);
        QCoreApplication::exec();
        feed.stop();
        const int status = sitting ? report() : int(tool::Failed);
        return failedStatus.value_or(status);
    }

private:
    static qint64 now() { return QDateTime::currentMSecsSinceEpoch(); }

    void onLook(const FrameLook& look) {
        if (ended)
            return;
        if (!sitting) {
            sitting.emplace(wanted.mode, options, look.timeMs);
            beganMs = look.timeMs;
        }
        const std::size_t before = sitting->kept().size();
        const Flaw flaw = sitting->offer(look);
        hint = hintFor(flaw, largestFace(look), sitting->asked(), options);
        hints[std::size_t(flaw)] = hint;
        if (sitting->kept().size() > before)
            writeNewest();
        if (!ended && sitting->isOver())
            finish();
        showProgress();
    }

    void writeNewest() {
        if (const QString problem = writer.write(sitting->kept().back()); !problem.isEmpty())
            giveUp(tool::Failed, problem);
    }

    void onTick() {
        if (ended || !sitting)
            return;
        sitting->passTime(now());
        const bool timeIsUp = wanted.seconds && now() - beganMs >= *wanted.seconds * 1000;
        if (timeIsUp || sitting->isOver())
            finish();
        showProgress();
    }

    void showProgress() {
        if (ended)
            return;
        QString line = u"%1 kept"_s.arg(sitting->kept().size());
        if (const Station* station = sitting->asked())
            line += u", %1 of %2 stations, %3 s | %4"_s.arg(
                QString::number(filledStations(sitting->stationPlan())),
                QString::number(allStations().size()),
                QString::number(timeLeftMs(sitting->stationPlan(), now()) / 1000),
                stationPrompt(*station));
        else if (wanted.seconds)
            line += u", %1 of %2 s"_s.arg((now() - beganMs) / 1000).arg(*wanted.seconds);
        console.progress(line + u" | "_s + hint);
    }

    void finish() {
        ended = true;
        QCoreApplication::exit(0);
    }

    void giveUp(int status, const QString& sentence) {
        if (ended)
            return;
        failedStatus = status;
        console.complain(sentence);
        finish();
    }

    int report() {
        const SampleCollection samples = readWithProgress(wanted.place.folder, console);
        SittingResult result;
        result.kept = int(writer.files().size());
        result.framesLookedAt = sitting->framesLookedAt();
        result.tally = sitting->tally();
        for (const KeptSample& sample : sitting->kept())
            addSample(result.sitting, sample.distance);
        result.folder = coverageOf(samples);
        result.rehearsal = rehearse(tableWithProgress(samples, console), samples.sittings,
                                    options.candidateThreshold);
        result.walkedAbout = wanted.mode == SittingMode::Auto;
        for (const QString& line : reportLines(result, options))
            console.say(line);
        if (result.kept == 0)
            console.complain(u"Nothing was kept. "_s +
                             hints[std::size_t(mostFrequentFlaw(result.tally))]);
        return isGood(result) ? tool::Succeeded : tool::Failed;
    }

    const TakeOptions wanted;
    const face::Options options;
    tool::Console& console;
    SensorFeed feed;
    SittingWriter writer;
    tool::StopSignals stops;
    QTimer ticks;

    std::optional<Sitting> sitting; ///< From the first look on.
    qint64 beganMs = 0;
    QString hint;
    std::array<QString, flawCount> hints; ///< The newest of each flaw.
    bool ended = false;
    std::optional<int> failedStatus;
};

} // namespace

int takeCommand(const QStringList& arguments, tool::Console& console) {
    tool::CommandLine line(console, u"take: takes samples of the owner with the sensor."_s);
    addSittingOptions(line);
    line.addSwitch(u"auto"_s, u"Asks for nothing: keeps what comes while the owner walks about."_s);
    line.addNumber(u"seconds"_s, u"N"_s, u"Ends after so many seconds."_s, 1, mostSeconds);
    line.addNumber(u"patience"_s, u"N"_s,
                   u"Gives up when the sensor gives no picture for so many seconds (%1)."_s.arg(
                       usualPatience.count()),
                   1, mostSeconds);
    if (const std::optional<int> status = line.read(arguments))
        return *status;
    const std::variant<SittingPlace, int> place = sittingPlace(line, console);
    if (const int* status = std::get_if<int>(&place))
        return *status;
    TakeOptions take;
    take.place = std::get<SittingPlace>(place);
    take.mode = line.isSet(u"auto"_s) ? SittingMode::Auto : SittingMode::Guided;
    take.seconds = line.number(u"seconds"_s);
    if (const std::optional<qint64> patience = line.number(u"patience"_s))
        take.patience = std::chrono::seconds(*patience);
    std::optional<Detectors> detectors = detectorsOrComplaint(console);
    return detectors ? TakeRun(take, std::move(*detectors), console).run() : int(tool::Failed);
}

} // namespace enroll
