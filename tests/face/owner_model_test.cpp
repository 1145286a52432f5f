#include "face/owner_model.h"
#include "support/file_size_limit.h"
#include "support/temporary_place.h"
#include "synthetic_face.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <chrono>
#include <filesystem>
#include <stop_token>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

std::vector<TrainingSample> faces(int count) {
    std::vector<TrainingSample> samples;
    for (int i = 0; i < count; ++i)
        samples.push_back({syntheticFace(160, static_cast<unsigned>(i) + 1), ownerClass});
    return samples;
}

/// Whether `work`, which returns whether it was ended, is ended by a stop that comes while it is
/// under way. How far it is by then depends on the machine, so that several moments are tried, from
/// late to early.
template <typename Work>
bool stopsAtSomeMoment(Work work) {
    for (int delayMs = 64; delayMs > 0; delayMs /= 2) {
        std::stop_source stop;
        const std::jthread stopper([&stop, delayMs] {
            std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
            stop.request_stop();
        });
        if (work(stop.get_token()))
            return true;
    }
    return false;
}

QByteArray readBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

int modeOf(const char* path) {
    return static_cast<int>(std::filesystem::status(path).permissions());
}

void writeBytes(const QString& path, const QByteArray& content) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

} // namespace

class OwnerModelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { place.emplace(); }
    void cleanup() { place.reset(); }
    void slicesTrainTheModelThatOneTrainingGives();
    void theModelKnowsItsSamples();
    void aStopEndsTheTraining();
    void theFileIsTheLibrarysOwn();
    void missingFoldersAreMade();
    void anEarlierFileIsReplacedWhole();
    void aNewFileHasTheModeOfTheUmask_data();
    void aNewFileHasTheModeOfTheUmask();
    void anEarlierFileKeepsItsMode();
    void aLinkIsFollowed();
    void aStopLeavesTheEarlierFile();
    void whatCannotBeWrittenLeavesNothingBehind_data();
    void whatCannotBeWrittenLeavesNothingBehind();
    void aReadOnlyFolderIsNoFailureOfTheProgram();
    void aFullDiskLeavesTheEarlierFile();

private:
    std::optional<TemporaryPlace> place;
};

void OwnerModelTest::slicesTrainTheModelThatOneTrainingGives() {
    const std::vector<TrainingSample> samples = faces(35);
    std::vector<cv::Mat> images;
    std::vector<int> labels;
    for (const TrainingSample& sample : samples) {
        images.push_back(sample.image);
        labels.push_back(sample.label);
    }
    auto whole = cv::face::LBPHFaceRecognizer::create(1, 8, 8, 8, DBL_MAX);
    whole->train(images, labels);
    const auto sliced = trainOwnerModel(samples);
    QCOMPARE(sliced->getHistograms().size(), whole->getHistograms().size());
    for (std::size_t i = 0; i < samples.size(); ++i)
        QCOMPARE(cv::norm(sliced->getHistograms()[i], whole->getHistograms()[i], cv::NORM_INF),
                 0.0);
    QCOMPARE(cv::norm(sliced->getLabels(), whole->getLabels(), cv::NORM_INF), 0.0);
    QCOMPARE(sliced->getRadius(), 1);
    QCOMPARE(sliced->getNeighbors(), 8);
    QCOMPARE(sliced->getGridX(), 8);
    QCOMPARE(sliced->getGridY(), 8);
    QCOMPARE(sliced->getThreshold(), DBL_MAX);
}

void OwnerModelTest::theModelKnowsItsSamples() {
    const auto model = trainOwnerModel(faces(3));
    int label = -1;
    double distance = -1.0;
    model->predict(syntheticFace(160, 2), label, distance);
    QCOMPARE(label, ownerClass);
    QCOMPARE(distance, 0.0);
    model->predict(cv::Mat(160, 160, CV_8U, cv::Scalar(0)), label, distance);
    QCOMPARE(label, ownerClass);
    QVERIFY(distance > face::Options().candidateThreshold);
}

void OwnerModelTest::aStopEndsTheTraining() {
    const std::vector<TrainingSample> samples = faces(200);
    QVERIFY(stopsAtSomeMoment([&samples](const std::stop_token& stop) {
        return trainOwnerModel(samples, stop) == nullptr;
    }));
}

void OwnerModelTest::theFileIsTheLibrarysOwn() {
    for (const int count : {1, 20}) {
        const auto model = trainOwnerModel(faces(count));
        model->write("own.yml");
        QVERIFY(writeOwnerModel(*model, "ours.yml"));
        QVERIFY(readBytes(u"ours.yml"_s).size() > 10000);
        QVERIFY(readBytes(u"ours.yml"_s) == readBytes(u"own.yml"_s));
    }
}

void OwnerModelTest::missingFoldersAreMade() {
    const auto model = trainOwnerModel(faces(1));
    QVERIFY(writeOwnerModel(*model, "a/b/model.yml"));
    QVERIFY(QFile::exists(u"a/b/model.yml"_s));
    QCOMPARE(QDir(u"a/b"_s).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{u"model.yml"_s});
}

void OwnerModelTest::anEarlierFileIsReplacedWhole() {
    writeBytes(u"model.yml"_s, QByteArray(5000000, 'x'));
    const auto model = trainOwnerModel(faces(1));
    QVERIFY(writeOwnerModel(*model, "model.yml"));
    model->write("own.yml");
    QVERIFY(readBytes(u"model.yml"_s) == readBytes(u"own.yml"_s));
}

void OwnerModelTest::aNewFileHasTheModeOfTheUmask_data() {
    QTest::addColumn<int>("umask");
    QTest::addColumn<int>("mode");
    QTest::newRow("readable by others") << 0022 << 0644;
    QTest::newRow("writable by the group") << 0002 << 0664;
    QTest::newRow("private") << 0077 << 0600;
}

void OwnerModelTest::aNewFileHasTheModeOfTheUmask() {
    QFETCH(int, umask);
    QFETCH(int, mode);
    const auto before = ::umask(static_cast<mode_t>(umask));
    const bool written = writeOwnerModel(*trainOwnerModel(faces(1)), "models/model.yml");
    ::umask(before);
    QVERIFY(written);
    QCOMPARE(modeOf("models/model.yml"), mode);
    QCOMPARE(modeOf("models"), mode | (mode & 0444) >> 2);
}

void OwnerModelTest::anEarlierFileKeepsItsMode() {
    writeBytes(u"model.yml"_s, "earlier");
    QCOMPARE(::chmod("model.yml", 0640), 0);
    QVERIFY(writeOwnerModel(*trainOwnerModel(faces(1)), "model.yml"));
    QCOMPARE(modeOf("model.yml"), 0640);
}

void OwnerModelTest::aLinkIsFollowed() {
    QVERIFY(QDir().mkdir(u"elsewhere"_s));
    QVERIFY(QFile::link(u"elsewhere/model.yml"_s, u"model.yml"_s));
    const auto model = trainOwnerModel(faces(1));
    QVERIFY(writeOwnerModel(*model, "model.yml"));
    QVERIFY(QFileInfo(u"model.yml"_s).isSymLink());
    QVERIFY(!QFileInfo(u"elsewhere/model.yml"_s).isSymLink());
    model->write("own.yml");
    QVERIFY(readBytes(u"elsewhere/model.yml"_s) == readBytes(u"own.yml"_s));
}

void OwnerModelTest::aStopLeavesTheEarlierFile() {
    const auto model = trainOwnerModel(faces(200));
    QVERIFY(stopsAtSomeMoment([&model](const std::stop_token& stop) {
        writeBytes(u"model.yml"_s, "earlier");
        return !writeOwnerModel(*model, "model.yml", stop);
    }));
    QCOMPARE(readBytes(u"model.yml"_s), "earlier");
    QCOMPARE(QDir().entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{u"model.yml"_s});
}

void OwnerModelTest::whatCannotBeWrittenLeavesNothingBehind_data() {
    QTest::addColumn<QString>("path");
    QTest::newRow("the folder is a file") << u"file/model.yml"_s;
    QTest::newRow("the folder is a dangling link") << u"dangling/model.yml"_s;
    QTest::newRow("the file is a folder") << u"folder"_s;
    QTest::newRow("no name") << QString();
    QTest::newRow("not a place for files") << u"/proc/model.yml"_s;
    QTest::newRow("not a place for folders") << u"/proc/models/model.yml"_s;
    QTest::newRow("name too long") << QString(300, u'x');
}

void OwnerModelTest::whatCannotBeWrittenLeavesNothingBehind() {
    QFETCH(QString, path);
    writeBytes(u"file"_s, "file");
    QVERIFY(QDir().mkpath(u"folder/inner"_s));
    QVERIFY(QFile::link(u"nowhere/at/all"_s, u"dangling"_s));
    QVERIFY(!writeOwnerModel(*trainOwnerModel(faces(1)), path.toStdString()));
    QCOMPARE(QDir().entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                              QDir::Name),
             (QStringList{u"dangling"_s, u"file"_s, u"folder"_s}));
    QCOMPARE(readBytes(u"file"_s), "file");
}

void OwnerModelTest::aReadOnlyFolderIsNoFailureOfTheProgram() {
    if (geteuid() == 0)
        QSKIP("permissions do not bind the super-user");
    QVERIFY(QDir().mkdir(u"models"_s));
    QVERIFY(QFile::setPermissions(u"models"_s, QFile::ReadOwner | QFile::ExeOwner));
    QVERIFY(!writeOwnerModel(*trainOwnerModel(faces(1)), "models/model.yml"));
    QVERIFY(
        QFile::setPermissions(u"models"_s, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QVERIFY(QDir(u"models"_s).isEmpty());
}

void OwnerModelTest::aFullDiskLeavesTheEarlierFile() {
    const auto model = trainOwnerModel(faces(9));
    QVERIFY(writeOwnerModel(*model, "model.yml"));
    const auto whole = static_cast<rlim_t>(QFileInfo(u"model.yml"_s).size());
    writeBytes(u"model.yml"_s, "earlier");
    for (const rlim_t bytes : {rlim_t{0}, rlim_t{10}, rlim_t{100'000}, whole - 1}) {
        const FileSizeLimit limit(bytes);
        QVERIFY(!writeOwnerModel(*model, "model.yml"));
    }
    QCOMPARE(readBytes(u"model.yml"_s), "earlier");
    QCOMPARE(QDir().entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{u"model.yml"_s});
    QVERIFY(writeOwnerModel(*model, "model.yml"));
}

QTEST_APPLESS_MAIN(OwnerModelTest)
#include "owner_model_test.moc"
