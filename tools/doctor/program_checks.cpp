#include "doctor/program_checks.h"

#include "face/face_options.h"
#include "face/owner_samples.h"
#include "voice/voice_files.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <opencv2/objdetect.hpp>

#include <optional>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace doctor {

namespace {

/// From here on more of the same light change little; README.md says what real faces showed.
constexpr std::size_t enoughSamples = 20;

Finding checkLibrary(const SensorBuild& build) {
    const QString subject = u"Sensor library"_s;
    if (!build.isRealLibrary)
        return {Verdict::Fault, subject, u"the program is built with the stand-in"_s,
                u"Run scripts/setup-kinect.sh, then scripts/run.sh."_s};
    const QString text = u"libfreenect2 %1"_s.arg(build.version);
    if (!build.timedWaitsEnd)
        return {Verdict::Fault, subject,
                text + u" without C++11 threading, so that a silent sensor is never noticed"_s,
                u"Build libfreenect2 again with -DENABLE_CXX11=ON, then this program."_s};
    return {Verdict::Good, subject, text + u" with C++11 threading"_s, {}};
}

Finding checkPipeline(const SensorBuild& build, const QString& wanted, const PipelineTrial& works) {
    const QString subject = u"Packet pipeline"_s;
    if (!build.isRealLibrary)
        return {Verdict::NotLookedAt, subject, u"the stand-in has none"_s, {}};
    const bool known = build.pipelines.contains(wanted);
    const QString taken = known ? wanted : build.pipelines.first();
    QString text = taken;
    if (!wanted.isEmpty() && !known)
        text += u", since LIBFREENECT2_PIPELINE names one that the library does not have"_s;
    if (!works(taken))
        return {Verdict::Fault, subject, text + u", which does not work here"_s,
                u"Set LIBFREENECT2_PIPELINE=cpu when you start the program."_s};
    if (taken == u"cpu"_s)
        return {Verdict::Note,
                subject,
                text + u", which needs a whole core for some 13 pictures a second"_s,
                {}};
    return {Verdict::Good, subject, text, {}};
}

bool isCascade(const QString& path) {
    try {
        cv::CascadeClassifier cascade;
        return QFileInfo(path).isFile() && cascade.load(QFile::encodeName(path).toStdString());
    } catch (const cv::Exception&) { // for what is no cascade
        return false;
    }
}

Finding checkCascades(const Places& places) {
    const QString subject = u"Face cascades"_s;
    const face::Options options;
    for (const std::string& cascade : {options.frontalCascadePath, options.profileCascadePath}) {
        const QString path = QFile::decodeName(cascade.c_str());
        if (!isCascade(places.inSystem(path)))
            return {Verdict::Fault, subject, path + u" is missing or damaged"_s,
                    u"Install the package opencv-data (again)."_s};
    }
    return {Verdict::Good, subject, u"both can be loaded"_s, {}};
}

/// Whether the working folder, where there is one, is a folder that can be entered and read.
bool isUsable(const Places& places) {
    return !QFileInfo::exists(places.folder) ||
           (QFileInfo(places.folder).isDir() && places.mayAccess(places.folder, R_OK | X_OK));
}

Finding checkSamples(const Places& places) {
    const QString subject = u"Owner's samples"_s;
    if (!isUsable(places))
        return {Verdict::NotLookedAt, subject, u"they lie in the working folder"_s, {}};
    const QString folder =
        places.folder + u'/' + QFile::decodeName(face::Options().samplesDir.c_str());
    std::vector<TrainingSample> samples;
    loadTavinSamples(QFile::encodeName(folder).toStdString(), samples);
    if (samples.empty())
        return {Verdict::Fault, subject, u"no picture under %1 can be read"_s.arg(folder),
                u"Take some with lumeno-enroll."_s};
    const QString text = u"%1 readable under %2"_s.arg(samples.size()).arg(folder);
    if (samples.size() < enoughSamples)
        return {Verdict::Note,
                subject,
                text +
                    u"; the owner is told well from %1 on, in several lights"_s.arg(enoughSamples),
                {}};
    return {Verdict::Good, subject, text, {}};
}

/// What keeps the program from writing its model file, and what to do about it.
struct Obstacle {
    QString path;
    QString cure;
};

std::optional<Obstacle> obstacleToWriting(const Places& places) {
    const auto notMine = [](const QString& path) {
        return Obstacle{path, u"Make that a folder which you may write to."_s};
    };
    if (!QFileInfo::exists(places.folder)) // then the launcher makes it
        return std::nullopt;
    const QString models = places.folder + u"/models"_s;
    // The folder that the next one, or the file, is made in.
    const QString& parent = QFileInfo::exists(models) ? models : places.folder;
    if (!isUsable(places) || !QFileInfo(parent).isDir() || !places.mayAccess(parent, W_OK | X_OK))
        return notMine(isUsable(places) ? parent : places.folder);
    const QString file =
        places.folder + u'/' + QFile::decodeName(face::Options().modelPath.c_str());
    if (QFileInfo(file).isDir())
        return Obstacle{file, u"That is a folder: move it away."_s};
    return std::nullopt;
}

Finding checkFolder(const Places& places) {
    const QString subject = u"Working folder"_s;
    if (const std::optional<Obstacle> obstacle = obstacleToWriting(places))
        return {Verdict::Fault, subject,
                u"the model cannot be written because of "_s + obstacle->path, obstacle->cure};
    return {Verdict::Good, subject, places.folder, {}};
}

Finding checkVoice(const Places& places) {
    const QString subject = u"Voice service"_s;
    const QString state = places.home + u"/.local/state/lumeno/"_s;
    QStringList there;
    for (const QString& name : {u"auralis-live.pid"_s, u"auralis-live-event.json"_s}) {
        const QFileInfo file(state + name);
        if (!file.exists())
            continue;
        if (!file.isFile() || !places.mayAccess(file.filePath(), R_OK))
            return {Verdict::Fault, subject, file.filePath() + u" cannot be read"_s,
                    u"Remove it, and let the voice service write it again under your name."_s};
        there.append(name);
    }
    if (there.size() < 2)
        return {Verdict::Note,
                subject,
                u"has left no direction under %1; everything else works without"_s.arg(state),
                {}};
    const bool alive = readVoiceFiles(places.home).processAlive;
    return {alive ? Verdict::Good : Verdict::Note,
            subject,
            alive ? u"runs"_s : u"does not run; everything else works without"_s,
            {}};
}

} // namespace

Findings checkSensorLibrary(const SensorBuild& build, const QString& wantedPipeline,
                            const PipelineTrial& works) {
    return {checkLibrary(build), checkPipeline(build, wantedPipeline, works)};
}

Findings checkFiles(const Places& places) {
    return {checkCascades(places), checkSamples(places), checkFolder(places), checkVoice(places)};
}

} // namespace doctor
