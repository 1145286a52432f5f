#include "faults.h"

#include <libfreenect2/frame_listener.hpp>

#include <QTest>

#include <limits>

using libfreenect2::Frame;
using virtual_kinect::Faults;
using virtual_kinect::FrameFault;
using virtual_kinect::parseFaults;
using virtual_kinect::Replay;

class FaultListTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anEmptyListIsAHealthyDevice_data();
    void anEmptyListIsAHealthyDevice();
    void deviceFaults();
    void frameFaultsHoldForTheirStreamsAndFrames_data();
    void frameFaultsHoldForTheirStreamsAndFrames();
    void replayWordsStandBesideTheFaults();
    void severalFaultsHoldAtOnce();
    void whatIsNoFaultIsNamedAndLeftOut_data();
    void whatIsNoFaultIsNamedAndLeftOut();
};

namespace {

constexpr unsigned int color = Frame::Color;
constexpr unsigned int infrared = Frame::Ir;
constexpr unsigned int depth = Frame::Depth;

constexpr auto toTheEnd = std::numeric_limits<quint64>::max();

/// Reads a list in which everything is a fault.
Faults parse(const char* list) {
    std::vector<std::string> complaints;
    const Faults faults = parseFaults(list, complaints);
    if (!complaints.empty())
        QTest::qFail(complaints.front().c_str(), __FILE__, __LINE__);
    return faults;
}

bool isHealthy(const Faults& faults) {
    return !faults.noPermission && !faults.busy && !faults.throwsAtOpen && !faults.throwsAtStart &&
           !faults.startFails && faults.slowStart.count() == 0 && faults.slowStop.count() == 0 &&
           faults.slowClose.count() == 0 && !faults.unpluggedAt && faults.depthLate == 0 &&
           faults.frames.empty();
}

/// Misspelled, without the value or the range that they need, or with one that they do not take.
constexpr const char* noFaults[] = {"bussy",
                                    "BUSY",
                                    "once=1",
                                    "once@3",
                                    "start",
                                    "start=-1",
                                    "start=1e9",
                                    "start=2s",
                                    "start=nan",
                                    "speed",
                                    "speed=0",
                                    "speed=-1",
                                    "speed=1000",
                                    "speed=2@5",
                                    "busy=1",
                                    "busy@3",
                                    "start-fails=yes",
                                    "no-permission=1",
                                    "no-permission@2",
                                    "throws=",
                                    "throws=open",
                                    "throws=start@3",
                                    "throws@3",
                                    "slow-start",
                                    "slow-close=60001",
                                    "depth-late",
                                    "depth-late=",
                                    "depth-late=61",
                                    "depth-late=-1",
                                    "depth-late=2@5",
                                    "slow-stop",
                                    "slow-stop=",
                                    "slow-stop=-1",
                                    "slow-stop=1.5",
                                    "slow-stop=60001",
                                    "slow-stop=9s",
                                    "slow-stop=99999999999999999999",
                                    "slow-stop=5@3",
                                    "unplugged",
                                    "unplugged@",
                                    "unplugged@x",
                                    "unplugged@3-5",
                                    "unplugged=3",
                                    "silent=color",
                                    "silent@",
                                    "silent@-3",
                                    "silent@5-",
                                    "silent@5-4",
                                    "silent@1-2-3",
                                    "silent@ 3",
                                    "missing",
                                    "missing=",
                                    "missing=rgb",
                                    "missing@3",
                                    "null-data=all",
                                    "zero-size=",
                                    "rgbx=color",
                                    "=",
                                    "@"};

} // namespace

void FaultListTest::anEmptyListIsAHealthyDevice_data() {
    QTest::addColumn<QByteArray>("list");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("blanks") << QByteArray("  \t");
    QTest::newRow("commas") << QByteArray(" , ,,");
}

void FaultListTest::anEmptyListIsAHealthyDevice() {
    QFETCH(QByteArray, list);
    QVERIFY(isHealthy(parse(list.constData())));
}

void FaultListTest::deviceFaults() {
    QVERIFY(parse("no-permission").noPermission);
    QVERIFY(parse("busy").busy);
    QVERIFY(parse("throws").throwsAtOpen && !parse("throws").throwsAtStart);
    QVERIFY(parse("throws=start").throwsAtStart && !parse("throws=start").throwsAtOpen);
    QVERIFY(parse("start-fails").startFails);
    QCOMPARE(parse("slow-start=1500").slowStart.count(), 1500);
    QCOMPARE(parse("slow-stop=2500").slowStop.count(), 2500);
    QCOMPARE(parse("slow-close=60000").slowClose.count(), 60000);
    QCOMPARE(parse("depth-late=60").depthLate, std::uint64_t{60});
    QCOMPARE(parse("unplugged@90").unpluggedAt.value(), std::uint64_t{90});
    QCOMPARE(parse("unplugged@0").unpluggedAt.value(), std::uint64_t{0});
}

void FaultListTest::frameFaultsHoldForTheirStreamsAndFrames_data() {
    QTest::addColumn<QByteArray>("list");
    QTest::addColumn<int>("kind");
    QTest::addColumn<unsigned int>("streams");
    QTest::addColumn<quint64>("first");
    QTest::addColumn<quint64>("last");
    constexpr auto all = color | infrared | depth;
    const auto row = [](const char* list, FrameFault::Kind kind, unsigned int streams,
                        quint64 first = 0, quint64 last = toTheEnd) {
        QTest::newRow(list) << QByteArray(list) << int{kind} << streams << first << last;
    };
    row("silent", FrameFault::Missing, all);
    row("silent@90", FrameFault::Missing, all, 90);
    row("silent@90-120", FrameFault::Missing, all, 90, 120);
    row("missing=color", FrameFault::Missing, color);
    row("missing=ir@5", FrameFault::Missing, infrared, 5);
    row("missing=depth@7-7", FrameFault::Missing, depth, 7, 7);
    row("null-data", FrameFault::NullData, all);
    row("null-data=ir@1-2", FrameFault::NullData, infrared, 1, 2);
    row("wrong-bytes=color", FrameFault::WrongBytes, color);
    row("zero-size=depth@3", FrameFault::ZeroSize, depth, 3);
    row("rgbx@4-6", FrameFault::Rgbx, all, 4, 6);
}

void FaultListTest::frameFaultsHoldForTheirStreamsAndFrames() {
    QFETCH(QByteArray, list);
    QFETCH(int, kind);
    QFETCH(unsigned int, streams);
    QFETCH(quint64, first);
    QFETCH(quint64, last);
    const Faults faults = parse(list.constData());
    for (const auto other : {FrameFault::Missing, FrameFault::NullData, FrameFault::WrongBytes,
                             FrameFault::ZeroSize, FrameFault::Rgbx})
        for (const unsigned int stream : {color, infrared, depth}) {
            const bool expected = other == kind && (streams & stream) != 0;
            QCOMPARE(faults.holds(other, stream, first), expected);
            QCOMPARE(faults.holds(other, stream, last), expected);
            QVERIFY(first == 0 || !faults.holds(other, stream, first - 1));
            QVERIFY(last + 1 == 0 || !faults.holds(other, stream, last + 1));
        }
}

void FaultListTest::replayWordsStandBesideTheFaults() {
    QCOMPARE(parse("busy").replay, Replay{});
    QCOMPARE(parse("once").replay, (Replay{true, 0, 1}));
    QCOMPARE(parse("start=12.5,silent").replay, (Replay{false, 12.5, 1}));
    QCOMPARE(parse("speed=0.25, once").replay, (Replay{true, 0, 0.25}));
    QCOMPARE(parse("speed=2,start=3,speed=4").replay, (Replay{false, 3, 4}));
}

void FaultListTest::severalFaultsHoldAtOnce() {
    const Faults faults = parse(" silent@10-20 ,silent@30-40, null-data=color@15,slow-stop=5");
    QVERIFY(faults.holds(FrameFault::Missing, depth, 15));
    QVERIFY(!faults.holds(FrameFault::Missing, depth, 25));
    QVERIFY(faults.holds(FrameFault::Missing, depth, 35));
    QVERIFY(faults.holds(FrameFault::NullData, color, 15));
    QCOMPARE(faults.slowStop.count(), 5);
}

void FaultListTest::whatIsNoFaultIsNamedAndLeftOut_data() {
    QTest::addColumn<QByteArray>("word");
    for (const char* word : noFaults)
        QTest::newRow(word) << QByteArray(word);
}

void FaultListTest::whatIsNoFaultIsNamedAndLeftOut() {
    QFETCH(QByteArray, word);
    const std::string text = word.toStdString();
    std::vector<std::string> complaints;
    const Faults faults = parseFaults("start-fails," + text + ",busy", complaints);
    QCOMPARE(complaints.size(), std::size_t{1});
    QCOMPARE(complaints.front(), "\"" + text + "\" is not a fault and is left out");
    Faults others = faults;
    QVERIFY(others.busy && others.startFails);
    others.busy = others.startFails = false;
    QVERIFY(isHealthy(others));
}

QTEST_GUILESS_MAIN(FaultListTest)
#include "fault_list_test.moc"
