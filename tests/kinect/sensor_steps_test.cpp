#include "kinect/kinect_stream_worker.h"
#include "kinect/scripted_sensor.h"
#include "kinect/sensor_session.h"
#include "support/log_capture.h"

#include <QMutexLocker>
#include <QTest>

#include <atomic>
#include <optional>
#include <stdexcept>

using namespace Qt::StringLiterals;
using Answer = ScriptedSensor::Answer;
using Step = SensorFailure::Step;
Q_DECLARE_METATYPE(Answer)
Q_DECLARE_METATYPE(Step)

namespace {

const QString starting = u"status Kinect: starting RGB/IR/Depth streams"_s;
const QString streaming = u"status Kinect: streaming RGB/IR/Depth from serial-of-the-device"_s;
const QString live = u"status Kinect: RGB/IR/Depth frames live"_s;
const QString stopped = u"status Kinect: stopped"_s;
const QString noDevice = u"error Kinect unavailable: no Kinect v2 device detected"_s;
const QString notOpened = u"error Kinect unavailable: failed to open device. It may be busy."_s;
const QString notStarted = u"error Kinect unavailable: failed to start RGB/IR/Depth streams"_s;

const QStringList opening = {u"context"_s, u"enumerate"_s, u"open serial-of-the-bus"_s};
const QStringList listening = {u"listener 7"_s, u"color listener"_s,
                               u"infrared and depth listener"_s, u"start"_s};
const QStringList ending = {u"listener ends"_s, u"context ends"_s};

const QSize colorSize(4, 2);
const QSize depthSize(3, 2);

ScriptedSensor::Picture floats(const QList<float>& values) {
    return {depthSize, QByteArray(reinterpret_cast<const char*>(values.constData()),
                                  values.size() * qsizetype(sizeof(float)))};
}

ScriptedSensor::Set pictures(const QList<float>& depth_mm = {0, 500, 1000, 2000, 4000, 0}) {
    return {{colorSize, QByteArray(colorSize.width() * colorSize.height() * 4, 'x')},
            floats({1, 2, 3, 4, 5, 6}),
            floats(depth_mm)};
}

/// A worker whose signals are noted among the sensor's steps, in the order in which both happen.
class NotedWorker : public KinectStreamWorker {
public:
    explicit NotedWorker(ScriptedSensor& sensor) {
        connect(
            this, &KinectStreamWorker::statusChanged, this,
            [&sensor](const QString& text) { sensor.steps.append(u"status "_s + text); },
            Qt::DirectConnection);
        connect(
            this, &KinectStreamWorker::streamError, this,
            [&sensor](const QString& text) { sensor.steps.append(u"error "_s + text); },
            Qt::DirectConnection);
        connect(
            this, &KinectStreamWorker::framesReady, this,
            [&sensor](const QImage& rgb, const QImage& ir, const QImage& depth) {
                sensor.steps.append(u"frames %1 %2 %3"_s.arg(rgb.isNull() ? u"-"_s : u"rgb"_s,
                                                             ir.isNull() ? u"-"_s : u"ir"_s,
                                                             depth.isNull() ? u"-"_s : u"depth"_s));
            },
            Qt::DirectConnection);
        connect(
            this, &KinectStreamWorker::depthRawReady, this,
            [this, &sensor](const QList<float>& depth_mm, int width, int height) {
                sensor.steps.append(u"raw depth %1 x %2"_s.arg(width).arg(height));
                lastDepth = depth_mm;
            },
            Qt::DirectConnection);
        sensor.atTheLastSet = [this] { stop(); };
    }

    void runToItsEnd() {
        start();
        QVERIFY(wait(10000));
        QVERIFY(ended);
    }

    QList<float> lastDepth;

protected:
    void run() override {
        KinectStreamWorker::run();
        ended = true;
    }

private:
    // What wait() orders between the threads happens inside Qt's library, into which the thread
    // sanitizer does not see; this it sees.
    std::atomic<bool> ended = false;
};

} // namespace

/// The order in which the worker uses the sensor and tells of it.
class SensorStepsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qRegisterMetaType<QList<float>>("QVector<float>"); }
    void init() {
        sensor.emplace();
        log.emplace();
    }
    void cleanup() {
        log.reset();
        sensor.reset();
    }

    void aRunTakesItsStepsInOrder();
    void everySetIsHandedOverAndGivenBack();
    void failureIsSaidBeforeTheSensorIsClosed_data();
    void failureIsSaidBeforeTheSensorIsClosed();
    void exceptionWhileStreamingEndsTheRun_data();
    void exceptionWhileStreamingEndsTheRun();
    void interruptionAloneEndsTheRun();
    void stopSetsTheInterruptionFlag();
    void depthWithoutAnyReadingStillHasItsList();

    void sessionNamesTheStepThatFailed_data();
    void sessionNamesTheStepThatFailed();
    void sessionEndsInItsDestructor();
    void sessionClosesOnceAndAlsoAfterAnException();
    void sessionWithoutColor();
    void framesThatWereTakenAreNotGivenBack();

private:
    std::optional<ScriptedSensor> sensor;
    std::optional<LogCapture> log;
};

void SensorStepsTest::aRunTakesItsStepsInOrder() {
    sensor->sets = {pictures()};
    NotedWorker(*sensor).runToItsEnd();
    const QStringList set = {live, u"frames rgb ir depth"_s, u"raw depth 3 x 2"_s, u"release"_s};
    const QStringList expected = QStringList{starting} + opening + listening +
                                 QStringList{streaming, u"wait 1000"_s} + set +
                                 QStringList{u"stop"_s, u"close"_s, stopped} + ending;
    QCOMPARE(sensor->steps, expected);
}

void SensorStepsTest::everySetIsHandedOverAndGivenBack() {
    sensor->sets = {pictures(), pictures(), pictures()};
    NotedWorker(*sensor).runToItsEnd();
    QCOMPARE(sensor->steps.count(u"frames rgb ir depth"_s), 3);
    QCOMPARE(sensor->steps.count(u"release"_s), 3);
    QCOMPARE(log->lines().last(), u"Qt Kinect streams stopped after frames 3"_s);
}

void SensorStepsTest::failureIsSaidBeforeTheSensorIsClosed_data() {
    QTest::addColumn<QString>("failing");
    QTest::addColumn<Answer>("answer");
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("lines");
    const QStringList thrown{u"Qt Kinect streams: ended by no answer"_s};
    const QStringList number{u"Qt Kinect streams: ended by an exception of an unknown type"_s};
    const auto rows = [&](const QString& failing, bool canRefuse, const QStringList& steps) {
        const auto row = [&failing](const char* how) -> QTestData& {
            return QTest::addRow("%s %s", qPrintable(failing), how) << failing;
        };
        if (canRefuse)
            row("fails") << Answer::Refuses << steps << QStringList();
        row("throws an exception") << Answer::ThrowsException << steps << thrown;
        row("throws a number") << Answer::ThrowsNumber << steps << number;
    };
    rows(u"context"_s, false, {starting, u"context"_s, noDevice});
    rows(u"enumerate"_s, true,
         {starting, u"context"_s, u"enumerate"_s, noDevice, u"context ends"_s});
    rows(u"open"_s, true, QStringList{starting} + opening + QStringList{notOpened, ending.last()});
    rows(u"listener"_s, false,
         QStringList{starting} + opening +
             QStringList{listening.first(), notStarted, u"close"_s, ending.last()});
    rows(u"start"_s, true,
         QStringList{starting} + opening + listening + QStringList{notStarted, u"close"_s} +
             ending);
}

void SensorStepsTest::failureIsSaidBeforeTheSensorIsClosed() {
    QFETCH(QString, failing);
    QFETCH(Answer, answer);
    sensor->answers.insert(failing, answer);
    NotedWorker(*sensor).runToItsEnd();
    QTEST(sensor->steps, "steps");
    QTEST(log->lines(), "lines");
}

void SensorStepsTest::exceptionWhileStreamingEndsTheRun_data() {
    QTest::addColumn<QString>("failing");
    QTest::addColumn<Answer>("answer");
    for (const QString& failing : {u"wait"_s, u"stop"_s, u"close"_s}) {
        QTest::addRow("%s, an exception", qPrintable(failing))
            << failing << Answer::ThrowsException;
        QTest::addRow("%s, a number", qPrintable(failing)) << failing << Answer::ThrowsNumber;
    }
}

void SensorStepsTest::exceptionWhileStreamingEndsTheRun() {
    QFETCH(QString, failing);
    QFETCH(Answer, answer);
    sensor->sets = {pictures()};
    sensor->answers.insert(failing, answer);
    NotedWorker(*sensor).runToItsEnd();
    QCOMPARE(sensor->steps.mid(sensor->steps.indexOf(u"stop"_s)),
             (QStringList{u"stop"_s, u"close"_s, stopped} + ending));
    QCOMPARE(log->linesStartingWith(u"Qt Kinect streams: ended by "_s).size(), 1);
}

void SensorStepsTest::interruptionAloneEndsTheRun() {
    sensor->sets = {pictures()};
    NotedWorker worker(*sensor);
    sensor->atTheLastSet = [&worker] { worker.requestInterruption(); };
    worker.runToItsEnd();
    QCOMPARE(sensor->steps.count(u"wait 1000"_s), 1);
    QVERIFY(sensor->steps.contains(stopped));
}

void SensorStepsTest::stopSetsTheInterruptionFlag() {
    sensor->sets = {pictures()};
    NotedWorker worker(*sensor);
    QList<bool> interrupted;
    sensor->atTheLastSet = [&] {
        interrupted.append(worker.isInterruptionRequested());
        worker.stop();
        interrupted.append(worker.isInterruptionRequested());
    };
    worker.runToItsEnd();
    QCOMPARE(interrupted, (QList<bool>{false, true}));
}

void SensorStepsTest::depthWithoutAnyReadingStillHasItsList() {
    const QList<float> unusable{0, 249, 8001, -1, 0, 9000};
    sensor->sets = {pictures(unusable)};
    NotedWorker worker(*sensor);
    worker.runToItsEnd();
    const qsizetype frames = sensor->steps.indexOf(u"frames rgb ir -"_s);
    QVERIFY(frames > 0);
    QCOMPARE(sensor->steps.value(frames + 1), u"raw depth 3 x 2"_s);
    QCOMPARE(worker.lastDepth, unusable);
    QVERIFY(!sensor->steps.contains(live));
}

void SensorStepsTest::sessionNamesTheStepThatFailed_data() {
    QTest::addColumn<QString>("failing");
    QTest::addColumn<Step>("expected");
    QTest::newRow("context") << u"context"_s << Step::Enumerate;
    QTest::newRow("enumerate") << u"enumerate"_s << Step::Enumerate;
    QTest::newRow("open") << u"open"_s << Step::Open;
    QTest::newRow("listener") << u"listener"_s << Step::Start;
    QTest::newRow("start") << u"start"_s << Step::Start;
}

void SensorStepsTest::sessionNamesTheStepThatFailed() {
    QFETCH(QString, failing);
    sensor->answers.insert(failing, Answer::ThrowsException);
    SensorSession session;
    const std::optional<SensorFailure> failure = session.start();
    QVERIFY(failure);
    QTEST(failure->step, "expected");
    QCOMPARE(failure->exception, u"no answer"_s);
    QVERIFY(!sensor->steps.contains(u"close"_s));
}

void SensorStepsTest::sessionEndsInItsDestructor() {
    sensor->sets = {pictures()};
    {
        SensorSession session;
        QVERIFY(!session.start());
        QVERIFY(session.wait(std::chrono::milliseconds(250)));
        QCOMPARE(session.frames().size(), std::size_t(3));
        QCOMPARE(session.device().getFirmwareVersion(), std::string("1.2.3"));
    }
    const QStringList use = {u"wait 250"_s, u"release"_s, u"stop"_s, u"close"_s};
    QCOMPARE(sensor->steps, opening + listening + use + ending);
}

void SensorStepsTest::sessionClosesOnceAndAlsoAfterAnException() {
    sensor->answers.insert(u"stop"_s, Answer::ThrowsException);
    {
        SensorSession session;
        QVERIFY(!session.start());
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, session.close());
        session.close();
    }
    const QStringList use = {u"stop"_s, u"close"_s};
    QCOMPARE(sensor->steps, opening + listening + use + ending);
}

void SensorStepsTest::sessionWithoutColor() {
    {
        SensorSession session;
        QVERIFY(!session.start(false));
    }
    const QStringList use = {u"listener 6"_s, u"infrared and depth listener"_s,
                             u"start some streams 0 1"_s, u"stop"_s, u"close"_s};
    QCOMPARE(sensor->steps, opening + use + ending);
}

void SensorStepsTest::framesThatWereTakenAreNotGivenBack() {
    sensor->sets = {pictures()};
    {
        SensorSession session;
        QVERIFY(!session.start());
        QVERIFY(session.wait(std::chrono::milliseconds(1)));
        const libfreenect2::FrameMap taken = session.take();
        QVERIFY(session.frames().empty());
        QCOMPARE(taken.size(), std::size_t(3));
        for (const auto& [type, frame] : taken) {
            QVERIFY(frame->data != nullptr);
            delete frame;
        }
    }
    QVERIFY(!sensor->steps.contains(u"release"_s));
}

QTEST_GUILESS_MAIN(SensorStepsTest)
#include "sensor_steps_test.moc"
