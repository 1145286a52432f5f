#include "app/memory_policy.h"

#include <QTest>
#include <cstdlib>
#include <malloc.h>
#include <memory>

namespace {

using Block = std::unique_ptr<void, decltype(&std::free)>;

/// Written to, or the compiler would do without it.
Block newBlock(std::size_t size) {
    Block block(std::malloc(size), &std::free);
    *static_cast<volatile char*>(block.get()) = 1;
    return block;
}

/// How many blocks the allocator has got from the system one by one.
std::size_t blocksFromTheSystem() {
    return mallinfo2().hblks;
}

} // namespace

class MemoryPolicyTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void largeBlocksGoBackEvenAfterLargerOnesWereFreed();
};

void MemoryPolicyTest::largeBlocksGoBackEvenAfterLargerOnesWereFreed() {
    const std::size_t unused = blocksFromTheSystem();
    {
        const Block probe = newBlock(64 * largeBlock);
        if (blocksFromTheSystem() == unused)
            QSKIP("this allocator is not the C library's");
    }
    giveLargeBlocksBack();
    newBlock(16 * largeBlock).reset(); // after this the allocator would keep smaller ones
    const std::size_t before = blocksFromTheSystem();
    {
        const Block block = newBlock(largeBlock);
        QCOMPARE(blocksFromTheSystem(), before + 1);
    }
    QCOMPARE(blocksFromTheSystem(), before);
}

QTEST_GUILESS_MAIN(MemoryPolicyTest)
#include "memory_policy_test.moc"
