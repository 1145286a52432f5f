#include "enroll/live_looks.h"

#include "common/console.h"
#include "common/stop_signals.h"
#include "enroll/commands.h"
#include "enroll/sensor_feed.h"

#include <QCoreApplication>
#include <QTimer>

namespace enroll {

using namespace Qt::StringLiterals;

std::optional<int> watchSensor(const Detectors& detectors, int seconds, tool::Console& console,
                               const std::function<bool(const FrameLook&)>& onLook) {
    SensorFeed feed(detectors, true);
    tool::StopSignals stops;
    QTimer end;
    end.setSingleShot(true);
    std::optional<int> failure;
    bool ended = false;
    const auto finish = [&ended] {
        ended = true;
        QCoreApplication::quit();
    };
    const auto giveUp = [&](const QString& sentence) {
        failure = noSensor;
        console.complain(sentence);
        finish();
    };
    QObject::connect(&feed, &SensorFeed::looked, &feed, [&](const FrameLook& look) {
        if (!end.isActive())
            end.start(seconds * 1000);
        if (!ended && onLook(look))
            finish();
    });
    QObject::connect(&feed, &SensorFeed::failed, &feed, giveUp);
    QObject::connect(&feed, &SensorFeed::silent, &feed, [&] { giveUp(silenceSentence()); });
    QObject::connect(&end, &QTimer::timeout, &feed, finish);
    QObject::connect(&stops, &tool::StopSignals::stopRequested, &feed, finish);
    console.progress(u"Opening the sensor"_s);
    feed.start();
    QCoreApplication::exec();
    feed.stop();
    return failure;
}

} // namespace enroll
