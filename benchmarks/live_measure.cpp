// Runs the whole program on the sensor stand-in for a while and prints what it cost, one figure a
// line: frames painted per second, the delay from a frame's arrival in the acquisition worker to
// the end of its painting, the processor share of each thread, and memory.
//
//   live_measure VIEW SECONDS      VIEW is rgb, combo, follow, …; see scripts/measure.sh
//
// On the virtual room it also says how soon people were marked, how long something wrong was shown,
// and what everything cost while somebody was there and while nobody was.
//
// Nothing in the program knows of it: arrival is heard on the worker's own signal, and painting is
// timed around the paint event of the tile that is on screen.

#include "app/memory_policy.h"
#include "app/record_types.h"
#include "face/face_recognition_worker.h"
#include "kinect/kinect_stream_worker.h"
#include "story_meter.h"
#include "ui/main_window.h"
#include "ui/stream_image_widget.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMap>
#include <QMutex>
#include <QMutexLocker>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int warmUpMs = 10000;
constexpr int personLostMs = 5000;

qint64 nowUs() {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

double percentile(std::vector<qint64> values, double share) {
    if (values.empty())
        return 0.0;
    const auto at = std::min(values.size() - 1,
                             static_cast<std::size_t>(share * static_cast<double>(values.size())));
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(at),
                     values.end());
    return static_cast<double>(values[at]) / 1000.0;
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Resident memory in MiB, as the kernel counts it now.
double residentMib() {
    const QList<QByteArray> pages = contents(u"/proc/self/statm"_s).split(' ');
    return pages.size() < 2 ? 0.0
                            : pages.at(1).toDouble() * static_cast<double>(sysconf(_SC_PAGESIZE)) /
                                  (1024.0 * 1024.0);
}

/// Processor seconds used so far, summed by thread name.
QMap<QString, double> secondsByThread() {
    QMap<QString, double> seconds;
    const double ticks = static_cast<double>(sysconf(_SC_CLK_TCK));
    for (const QString& id :
         QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QByteArray stat = contents(u"/proc/self/task/%1/stat"_s.arg(id));
        const qsizetype open = stat.indexOf('('), close = stat.lastIndexOf(')');
        const QList<QByteArray> fields = stat.mid(close + 2).split(' ');
        if (open < 0 || close < open || fields.size() < 13)
            continue;
        // Behind the name stand state … utime and stime, the 12th and 13th of these fields.
        const QString name = QString::fromUtf8(stat.mid(open + 1, close - open - 1));
        seconds[name] += (fields.at(11).toDouble() + fields.at(12).toDouble()) / ticks;
    }
    return seconds;
}

/// Listens to the worker and to the paint events of the tiles.
class Meter : public QObject {
public:
    void watch(MainWindow& window) {
        const auto* worker = window.findChild<KinectStreamWorker*>();
        connect(
            worker, &KinectStreamWorker::framesReady, this,
            [this] {
                const QMutexLocker lock(&mutex);
                arrivals.push_back(nowUs());
            },
            Qt::DirectConnection);
        // Connected after the window's own slot, so the tiles hold the frame when this is called.
        connect(
            worker, &KinectStreamWorker::framesReady, this, [this] { ++delivered; },
            Qt::QueuedConnection);
        connect(window.findChild<FaceRecognitionWorker*>(), &FaceRecognitionWorker::overlaysReady,
                this, [this](const QList<FaceOverlay>& overlays) { story.heard(overlays); });
        for (StreamImageWidget* tile : window.findChildren<StreamImageWidget*>())
            tile->installEventFilter(this);
    }

    void startCounting() {
        counting = true;
        startedUs = nowUs();
    }

    bool eventFilter(QObject* tile, QEvent* event) override {
        if (event->type() != QEvent::Paint)
            return false;
        const qint64 begun = nowUs();
        tile->event(event);
        const qint64 ended = nowUs();
        // The Combo view's colour tile stands for the view: one painted frame counts once.
        const bool large = static_cast<const QWidget*>(tile)->height() > 200;
        if (counting && large) {
            paintings.push_back(ended - begun);
            if (delivered > painted) {
                painted = delivered;
                ++shown;
                const QMutexLocker lock(&mutex);
                delays.push_back(ended - arrivals[painted - 1]);
            }
        } else if (large) {
            painted = delivered;
        }
        if (large && delivered > 0)
            story.painted(secondsSinceFirstFrame());
        return true;
    }

    double secondsSinceFirstFrame() {
        const QMutexLocker lock(&mutex);
        return arrivals.empty() ? 0.0 : static_cast<double>(nowUs() - arrivals.front()) / 1e6;
    }

    void print() const {
        const double seconds = static_cast<double>(nowUs() - startedUs) / 1e6;
        std::printf("frames_painted_per_second %.2f\n", static_cast<double>(shown) / seconds);
        std::printf("delay_ms_median %.2f\n", percentile(delays, 0.5));
        std::printf("delay_ms_p95 %.2f\n", percentile(delays, 0.95));
        std::printf("delay_ms_p99 %.2f\n", percentile(delays, 0.99));
        std::printf("painting_ms_median %.2f\n", percentile(paintings, 0.5));
        if (qgetenv("LUMENO_VIRTUAL_KINECT") == "room")
            story.print();
    }

private:
    StoryMeter story;
    QMutex mutex;
    std::vector<qint64> arrivals;
    std::vector<qint64> delays;
    std::vector<qint64> paintings;
    std::size_t delivered = 0;
    std::size_t painted = 0;
    int shown = 0;
    bool counting = false;
    qint64 startedUs = 0;
};

/// Processor use of all threads but the stand-in's, apart for times with and without people.
class UseByCompany {
public:
    /// To be called about once a second.
    void sample(double seconds) {
        double used = 0.0;
        const QMap<QString, double> threads = secondsByThread();
        for (auto thread = threads.begin(); thread != threads.end(); ++thread) {
            if (!thread.key().startsWith(u"virtual-"_s))
                used += thread.value();
        }
        const bool somebody = StoryMeter::somebodyThere(seconds);
        if (begun && somebody == somebodyBefore) {
            (somebody ? accompanied : alone).used += used - usedBefore;
            (somebody ? accompanied : alone).lasted += seconds - secondsBefore;
        }
        begun = true;
        somebodyBefore = somebody;
        usedBefore = used;
        secondsBefore = seconds;
    }
    void print() const {
        const bool inRoom = qgetenv("LUMENO_VIRTUAL_KINECT") == "room";
        const Share all{accompanied.used + alone.used, accompanied.lasted + alone.lasted};
        all.print("all");
        if (inRoom) {
            accompanied.print("with_people");
            alone.print("with_nobody");
        }
    }

private:
    struct Share {
        double used = 0.0;
        double lasted = 0.0;
        void print(const char* when) const {
            if (lasted > 0.0)
                std::printf("cpu_percent_total_%s %.1f\n", when, 100.0 * used / lasted);
        }
    };
    Share accompanied;
    Share alone;
    bool begun = false;
    bool somebodyBefore = false;
    double usedBefore = 0.0;
    double secondsBefore = 0.0;
};

void printThreads(const QMap<QString, double>& before, double seconds) {
    const QMap<QString, double> after = secondsByThread();
    for (auto thread = after.begin(); thread != after.end(); ++thread) {
        const double share = (thread.value() - before.value(thread.key())) / seconds;
        if (share >= 0.001)
            std::printf("cpu_percent_%s %.1f\n",
                        qPrintable(QString(thread.key()).replace(u' ', u'_')), 100.0 * share);
    }
}

double peakMib() {
    for (const QByteArray& line : contents(u"/proc/self/status"_s).split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.simplified().split(' ').value(1).toDouble() / 1024.0;
    }
    return 0.0;
}

} // namespace

int main(int argc, char** argv) {
    giveLargeBlocksBack();
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int seconds = arguments.value(2).toInt();
    if (seconds < 40) {
        std::fprintf(stderr, "usage: live_measure VIEW SECONDS   (40 seconds or more)\n");
        return EXIT_FAILURE;
    }
    registerRecordTypes();
    MainWindow window(false, false, false, false, personLostMs, false);
    Meter meter;
    meter.watch(window);
    window.show();
    window.setView(arguments.value(1));

    QMap<QString, double> before;
    double afterHalfAMinute = 0.0;
    UseByCompany use;
    QTimer eachSecond;
    QObject::connect(&eachSecond, &QTimer::timeout, &window,
                     [&] { use.sample(meter.secondsSinceFirstFrame()); });
    QTimer::singleShot(warmUpMs, &window, [&] {
        before = secondsByThread();
        meter.startCounting();
        eachSecond.start(1000);
    });
    QTimer::singleShot(30000, &window, [&] { afterHalfAMinute = residentMib(); });
    QTimer::singleShot(seconds * 1000, &window, [&] {
        meter.print();
        use.print();
        printThreads(before, seconds - warmUpMs / 1000.0);
        std::printf("memory_mib_after_30s %.0f\n", afterHalfAMinute);
        std::printf("memory_mib_at_end %.0f\n", residentMib());
        std::printf("memory_mib_peak %.0f\n", peakMib());
        window.close();
    });
    return QApplication::exec();
}
