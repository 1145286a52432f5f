#include "app/memory_policy.h"

#include <QTest>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <future>
#include <malloc.h>
#include <memory>
#include <thread>
#include <vector>

#include <sys/resource.h>

namespace {

using Block = std::unique_ptr<void, decltype(&std::free)>;
using Bytes = std::unique_ptr<unsigned char[]>;

constexpr std::size_t colorFrameBytes = 1920 * 1080 * 4;
constexpr std::size_t pageBytes = 4096;

/// Written to, or the compiler would do without it.
Block newBlock(std::size_t size) {
    Block block(std::malloc(size), &std::free);
    *static_cast<volatile char*>(block.get()) = 1;
    return block;
}

/// As the sensor library makes a frame: uninitialised, then filled.
Bytes newFrame(std::size_t size) {
    Bytes frame(new unsigned char[size]);
    std::memset(frame.get(), 1, size);
    return frame;
}

/// How many blocks the allocator has got from the system one by one.
std::size_t blocksFromTheSystem() {
    return mallinfo2().hblks;
}

long pageFaults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

/// Does for one depth frame what the library's processor pipeline does: work space, then infrared
/// and depth that the listener keeps.
std::vector<Bytes> newDepthFrames() {
    constexpr std::size_t pixels = 512 * 424;
    std::vector<Bytes> work;
    for (const std::size_t bytesPerPixel : {36U, 36U, 12U})
        work.push_back(newFrame(pixels * bytesPerPixel));
    std::vector<Bytes> frames;
    frames.push_back(newFrame(pixels * 4));
    frames.push_back(newFrame(pixels * 4));
    return frames;
}

} // namespace

class MemoryPolicyTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void largeBlocksGoBackEvenAfterLargerOnesWereFreed();
    void smallMatricesUseTheSameMemoryAgain();
    void framesOfTheSensorLibraryUseTheSameMemoryAgain();
    void framesThatEndOnAnotherThreadUseTheSameMemoryAgain();
    void aSmallerBlockDoesNotGetAMuchLargerOne();
    void keptBlocksAreBounded();
    void aBlockThatIsTooLargeIsNotKept();
    void newFailsWhereThereIsNoMemory();
};

void MemoryPolicyTest::initTestCase() {
    const std::size_t unused = blocksFromTheSystem();
    const Block probe = newBlock(64 * largeBlock);
    if (blocksFromTheSystem() == unused)
        QSKIP("this allocator is not the C library's");
    giveLargeBlocksBack();
}

void MemoryPolicyTest::largeBlocksGoBackEvenAfterLargerOnesWereFreed() {
    newBlock(16 * largeBlock).reset(); // after this the allocator would keep smaller ones
    const std::size_t before = blocksFromTheSystem();
    {
        const Block block = newBlock(largeBlock);
        QCOMPARE(blocksFromTheSystem(), before + 1);
    }
    QCOMPARE(blocksFromTheSystem(), before);
}

/// The body pass makes and frees a few of them with every frame, at the end of the heap.
void MemoryPolicyTest::smallMatricesUseTheSameMemoryAgain() {
    constexpr std::size_t matrixBytes = 512 * 424 * sizeof(float);
    const auto fillThree = [] {
        for (std::vector<Block> matrices; matrices.size() < 3;) {
            matrices.push_back(newBlock(matrixBytes));
            std::memset(matrices.back().get(), 1, matrixBytes);
        }
    };
    fillThree();
    const long before = pageFaults();
    fillThree();
    QVERIFY2(pageFaults() - before < long{matrixBytes / pageBytes} / 2,
             qPrintable(QString::number(pageFaults() - before)));
}

void MemoryPolicyTest::framesOfTheSensorLibraryUseTheSameMemoryAgain() {
    constexpr int frames = 30;
    const auto oneSet = [] {
        const Bytes color = newFrame(colorFrameBytes);
        newDepthFrames();
    };
    for (int i = 0; i < 3; ++i)
        oneSet();
    const long before = pageFaults();
    for (int i = 0; i < frames; ++i)
        oneSet();
    const long faults = pageFaults() - before;
    // From the system, the colour frames alone would cost this many.
    const long unkept = frames * static_cast<long>(colorFrameBytes / pageBytes);
    QVERIFY2(faults < unkept / 20, qPrintable(QString::number(faults)));
}

void MemoryPolicyTest::framesThatEndOnAnotherThreadUseTheSameMemoryAgain() {
    constexpr int frames = 30;
    const auto makeHereEndThere = [] {
        std::thread([frame = newFrame(colorFrameBytes)] {}).join();
    };
    makeHereEndThere();
    const long before = pageFaults();
    for (int i = 0; i < frames; ++i)
        makeHereEndThere();
    const long faults = pageFaults() - before;
    const long unkept = frames * static_cast<long>(colorFrameBytes / pageBytes);
    QVERIFY2(faults < unkept / 10, qPrintable(QString::number(faults)));
}

void MemoryPolicyTest::keptBlocksAreBounded() {
    const std::size_t before = blocksFromTheSystem();
    {
        std::vector<Bytes> frames;
        for (std::size_t i = 0; i < 3 * maxKeptBlocks; ++i)
            frames.push_back(newFrame(colorFrameBytes));
    }
    QVERIFY(blocksFromTheSystem() <= before + maxKeptBlocks);
}

void MemoryPolicyTest::aBlockThatIsTooLargeIsNotKept() {
    const std::size_t before = blocksFromTheSystem();
    newFrame(2 * maxKeptBlock).reset();
    QCOMPARE(blocksFromTheSystem(), before);
}

void MemoryPolicyTest::aSmallerBlockDoesNotGetAMuchLargerOne() {
    newFrame(12 * largeBlock).reset();
    const Bytes frame = newFrame(10 * largeBlock);
    QVERIFY(malloc_usable_size(frame.get()) < 11 * largeBlock);
    const Bytes another = newFrame(11 * largeBlock); // the one that was kept
    QVERIFY(malloc_usable_size(another.get()) >= 12 * largeBlock);
}

void MemoryPolicyTest::newFailsWhereThereIsNoMemory() {
    volatile std::size_t absurd = std::size_t{1} << 62;
    QVERIFY_THROWS_EXCEPTION(std::bad_alloc, Bytes(new unsigned char[absurd]));
    Bytes none(new (std::nothrow) unsigned char[absurd]);
    QVERIFY(!none);
}

QTEST_GUILESS_MAIN(MemoryPolicyTest)
#include "memory_policy_test.moc"
