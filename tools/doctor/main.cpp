// Says what keeps the Control Center from using its sensor, its cascades and its samples.

#include "common/command_line.h"
#include "common/console.h"
#include "common/program_folder.h"
#include "doctor/examination.h"
#include "doctor/program_checks.h"
#include "doctor/sensor_checks.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>

#include <opencv2/core/version.hpp>

using namespace Qt::StringLiterals;

namespace {

/// Stands before the name of a pipeline where the doctor starts itself to try it.
const QString trialArgument = u"--try-pipeline"_s;
/// A pipeline that takes longer than this to be made hangs.
constexpr int trialMs = 20'000;

bool pipelineWorks(const QString& name) {
    QProcess trial;
    trial.setStandardOutputFile(QProcess::nullDevice());
    trial.setStandardErrorFile(QProcess::nullDevice());
    trial.start(QCoreApplication::applicationFilePath(), {trialArgument, name});
    if (!trial.waitForFinished(trialMs)) {
        trial.kill();
        trial.waitForFinished();
        return false;
    }
    return trial.exitStatus() == QProcess::NormalExit && trial.exitCode() == 0;
}

QString versions(const doctor::SensorBuild& build) {
    return u"Lumeno Control Center %1, Qt %2, OpenCV %3, sensor library: %4, pipelines: %5"_s.arg(
        tool::version(), QLatin1StringView(qVersion()), QLatin1StringView(CV_VERSION),
        build.isRealLibrary ? u"libfreenect2 "_s + build.version : u"the stand-in"_s,
        build.pipelines.join(u' '));
}

} // namespace

int main(int argc, char* argv[]) {
    const QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments.at(1) == trialArgument)
        return doctor::tryPipeline(arguments.at(2));

    tool::Console console(u"lumeno-doctor"_s);
    tool::CommandLine line(
        console, u"Looks at everything that the Lumeno Control Center needs: one line for each "
                 "thing, with what to do about it. Ends with 0 when all is well, with 1 when "
                 "something is wrong."_s);
    line.addSwitch(u"report"_s, u"Prints a text for a bug report."_s);
    line.addText(u"folder"_s, u"FOLDER"_s,
                 u"The folder that the Control Center is started in, if not the usual one."_s);
    line.addText(u"home"_s, u"FOLDER"_s, u"The home folder, if not yours."_s);
    line.addText(u"root"_s, u"FOLDER"_s,
                 u"Looks for sysfs, devices, processes, rules and cascades below this folder."_s);
    if (const auto status = line.read(arguments))
        return *status;

    const QString home = line.text(u"home"_s).value_or(QDir::homePath());
    const QString usualFolder = tool::programFolder(QCoreApplication::applicationDirPath(), home);
    doctor::Places places = doctor::thisMachine(home, line.text(u"folder"_s).value_or(usualFolder));
    places.root = line.text(u"root"_s).value_or(QString());

    const doctor::SensorBuild build = doctor::sensorBuild();
    const doctor::Findings findings =
        doctor::checkSensor(places) +
        doctor::checkSensorLibrary(build, qEnvironmentVariable("LIBFREENECT2_PIPELINE"),
                                   pipelineWorks) +
        doctor::checkFiles(places);
    if (line.isSet(u"report"_s))
        console.sayText(doctor::reportOf(findings, places, versions(build)));
    else
        for (const doctor::Finding& finding : findings)
            console.say(doctor::lineOf(finding));
    return doctor::statusOf(findings);
}
