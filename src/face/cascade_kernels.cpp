#include "face/cascade_kernels.h"

#include "face/cascade_stages.h"

namespace LUMENO_KERNELS {
namespace {

constexpr int wordBits = 64;
/// Rows of windows that are worked on together, so that the few windows that are left after the
/// first stages still fill groups of blocks.
constexpr int stripRows = 8;
/// Blocks that share the loading of a stump.
constexpr int groupBlocks = 4;

/// One search: the picture, the cascade and the memory for the rows that are worked on.
class Search {
public:
    Search(const KernelPicture& where, const KernelCascade& what, const KernelMemory& memory,
           const KernelListener& whoAsks)
        : picture(where), cascade(what), listener(whoAsks), words(wordsOf(where.windowsX)),
          valid(reinterpret_cast<std::uint64_t*>(memory.bytes)), passed(valid + words),
          blocks(reinterpret_cast<Block*>(passed + words) + 1),
          contrast(reinterpret_cast<std::int16_t*>(blocks + maxBlocks(words) + 1)) {
        blocks[-1] = {nullptr, nullptr, 0, 0, -1}; // of no row, so that keep() need not ask
    }

    static std::size_t wordsOf(int windows) {
        return (static_cast<std::size_t>(windows) + wordBits - 1) / wordBits;
    }
    /// Of one strip.
    static std::size_t maxBlocks(std::size_t rowWords) {
        return rowWords * (wordBits / lanes) * stripRows;
    }
    static std::size_t bytes(std::size_t rowWords) {
        // Before the blocks of a strip stands one of no row, and behind them one that keep() writes
        // but does not count. A block that begins at the last window of a row has its other lanes
        // behind it.
        return rowWords * 2 * sizeof(std::uint64_t) + (maxBlocks(rowWords) + 2) * sizeof(Block) +
               (rowWords * wordBits * stripRows + lanes) * sizeof(std::int16_t);
    }

    void run() {
        for (int y = 0; y < picture.windowsY; y += stripRows) {
            blockCount = 0;
            for (int row = y; row < y + stripRows && row < picture.windowsY; ++row)
                beginRow(row, contrast + words * wordBits * static_cast<std::size_t>(row - y));
            // Nearly all windows fail some stage for certain, so only the few that are left after
            // the last stage are looked at closely.
            for (int stage = 1; stage < cascade.stageCount && blockCount > 0; ++stage)
                leaveOutFailing<Bounds::upper>(stage);
            for (int stage = 1; stage < cascade.stageCount && blockCount > 0; ++stage)
                leaveOutFailing<Bounds::both>(stage);
            for (std::size_t i = 0; i < blockCount; ++i) {
                for (std::uint32_t left = blocks[i].alive; left != 0; left &= left - 1)
                    listener.found(listener.context, blocks[i].x + __builtin_ctz(left),
                                   blocks[i].y);
            }
        }
    }

private:
    /// Contrasts of a row, its first stage, and which of its windows are looked at at all.
    void beginRow(int y, std::int16_t* rowContrast) {
        if (picture.step == 2)
            measure<2>(y, rowContrast);
        else
            measure<1>(y, rowContrast);
        if (picture.windowsX % wordBits != 0)
            valid[words - 1] &= (std::uint64_t{1} << (picture.windowsX % wordBits)) - 1;

        askFirstStage(y, rowContrast);
        leaveOutSkipped();
        for (std::size_t word = 0; word < words; ++word) {
            for (int bit = 0; bit < wordBits; bit += lanes)
                keep(blockOf(passed, word, bit, y, rowContrast));
        }
    }

    /// Which of the valid windows of a row pass the first stage.
    void askFirstStage(int y, const std::int16_t* rowContrast) {
        constexpr int count = wordBits / lanes < groupBlocks ? wordBits / lanes : groupBlocks;
        const KernelStage& stage = cascade.stages[0];
        for (std::size_t word = 0; word < words; ++word) {
            passed[word] = 0;
            for (int bit = 0; bit < wordBits && valid[word] != 0; bit += count * lanes) {
                Block group[count];
                Verdict verdicts[count];
                for (int i = 0; i < count; ++i)
                    group[i] = blockOf(valid, word, bit + i * lanes, y, rowContrast);
                boundStage<Bounds::both, count>(cascade, stage, group, verdicts);
                for (int i = 0; i < count; ++i) {
                    const Block left = judged<Bounds::both>(stage, group[i], verdicts[i]);
                    passed[word] |= std::uint64_t{left.alive} << (bit + i * lanes);
                }
            }
        }
    }

    /// The block that holds those windows of a row from a bit on.
    Block blockOf(const std::uint64_t* windows, std::size_t word, int bit, int y,
                  const std::int16_t* rowContrast) const {
        const std::uint16_t* rowSums =
            picture.sums16 + static_cast<std::size_t>(y * picture.step) * picture.stride;
        const auto alive = static_cast<std::uint32_t>(windows[word] >> bit) & allLanes;
        const std::size_t x = word * wordBits + static_cast<std::size_t>(bit);
        return {rowSums + x, rowContrast + x, alive, static_cast<std::int32_t>(x), y};
    }

    /// Contrasts and validity of all windows of a row.
    template <int step>
    void measure(int y, std::int16_t* rowContrast) {
        const std::size_t top = static_cast<std::size_t>(y * step + 1) * picture.sumStride + 1;
        const std::size_t bottom =
            top + static_cast<std::size_t>(cascade.innerHeight) * picture.sumStride;
        const int width = cascade.innerWidth;
        const std::int32_t offset = cascade.contrastOffset;
        const auto area = static_cast<std::uint32_t>(width * cascade.innerHeight);
        for (std::size_t word = 0; word < words; ++word) {
            const std::size_t x = word * wordBits * step;
            const std::int32_t* sumTop = picture.sums + top + x;
            const std::int32_t* sumBottom = picture.sums + bottom + x;
            const std::int32_t* squareTop = picture.squares + top + x;
            const std::int32_t* squareBottom = picture.squares + bottom + x;
            std::int16_t* out = rowContrast + word * wordBits;
            std::int16_t isValid[wordBits];
            for (int i = 0; i < wordBits; ++i) {
                const int at = i * step;
                const auto sum = static_cast<std::uint32_t>(sumBottom[at + width]) -
                                 static_cast<std::uint32_t>(sumBottom[at]) -
                                 static_cast<std::uint32_t>(sumTop[at + width]) +
                                 static_cast<std::uint32_t>(sumTop[at]);
                const auto squares = static_cast<std::uint32_t>(squareBottom[at + width]) -
                                     static_cast<std::uint32_t>(squareBottom[at]) -
                                     static_cast<std::uint32_t>(squareTop[at + width]) +
                                     static_cast<std::uint32_t>(squareTop[at]);
                const std::uint32_t n = area * squares - sum * sum;
                // Half of it fits a signed number, which processors convert faster.
                const float half = static_cast<float>(static_cast<std::int32_t>(n >> 1));
                const float root = __builtin_sqrtf(half + half);
                out[i] = static_cast<std::int16_t>(static_cast<std::int32_t>(root + 0.5F) - offset);
                isValid[i] = n >= cascade.smallestN ? -1 : 0;
            }
            valid[word] = 0;
            for (int i = 0; i < wordBits; i += lanes)
                valid[word] |= std::uint64_t{bitsOf(load(isValid + i))} << i;
        }
    }

    /// The norm of one window, as the library computes it: what features are multiplied by.
    float norm(int x, int y) const {
        const std::size_t top = static_cast<std::size_t>(y * picture.step + 1) * picture.sumStride +
                                static_cast<std::size_t>(x * picture.step + 1);
        const std::size_t bottom =
            top + static_cast<std::size_t>(cascade.innerHeight) * picture.sumStride;
        const auto inner = [&](const std::int32_t* sums) {
            const auto width = static_cast<std::size_t>(cascade.innerWidth);
            return static_cast<double>(static_cast<std::uint32_t>(sums[bottom + width]) -
                                       static_cast<std::uint32_t>(sums[bottom]) -
                                       static_cast<std::uint32_t>(sums[top + width]) +
                                       static_cast<std::uint32_t>(sums[top]));
        };
        const double sum = inner(picture.sums);
        const double area = static_cast<double>(cascade.innerWidth) * cascade.innerHeight;
        const double n = area * inner(picture.squares) - sum * sum;
        return static_cast<float>(1.0 / __builtin_sqrt(n));
    }

    /// Sums up one stage of one window as the library does.
    bool passesExactly(const KernelStage& stage, const Block& block, int lane) const {
        const float factor = norm(block.x + lane, block.y);
        double sum = 0.0;
        for (int r = 0; r < stage.runCount; ++r) {
            const KernelStage::Run& run = stage.runs[r];
            for (std::uint32_t i = run.first; i < run.first + run.count; ++i) {
                const KernelRule& rule = cascade.rules[i];
                const auto value = static_cast<float>(
                    featureAlone(run.shape, block.sums + lane, cascade.stumps[i], cascade.parts));
                const bool below = rule.sign * value * factor < rule.threshold;
                sum += static_cast<double>(below ? rule.below : rule.otherwise);
            }
        }
        return !(sum < stage.threshold);
    }

    /// A window that fails the first stage makes its neighbour to the right be skipped, and one
    /// that is skipped makes nobody be. So in a run of failing windows the first, the third, the
    /// fifth ... are looked at.
    void leaveOutSkipped() {
        constexpr std::uint64_t evenBits = 0x5555555555555555;
        std::uint64_t carry = 0;
        for (std::size_t word = 0; word < words; ++word) {
            const std::uint64_t failing = valid[word] & ~passed[word] & ~carry;
            const std::uint64_t starts = failing & ~(failing << 1);
            // Adding its start to a run of ones clears the run.
            const std::uint64_t evenRuns = failing & ~(failing + (starts & evenBits));
            const std::uint64_t looked = (evenRuns & evenBits) | (failing & ~evenRuns & ~evenBits);
            passed[word] &= ~((looked << 1) | carry);
            carry = looked >> (wordBits - 1);
        }
    }

    /// Takes the windows out that fail a stage: with both bounds all of them, otherwise those that
    /// fail for certain.
    template <Bounds bounds>
    void leaveOutFailing(int stage) {
        const KernelStage& limits = cascade.stages[stage];
        const std::size_t end = blockCount;
        blockCount = 0;
        std::size_t next = 0;
        while (next < end) {
            Verdict verdicts[groupBlocks];
            std::size_t count = end - next;
            if (count >= groupBlocks) {
                boundStage<bounds, groupBlocks>(cascade, limits, blocks + next, verdicts);
                count = groupBlocks;
            } else if (count >= 2) {
                boundStage<bounds, 2>(cascade, limits, blocks + next, verdicts);
                count = 2;
            } else {
                boundStage<bounds, 1>(cascade, limits, blocks + next, verdicts);
            }
            for (std::size_t i = 0; i < count; ++i)
                keep(judged<bounds>(limits, blocks[next + i], verdicts[i]));
            next += count;
        }
    }

    /// The block without the windows that fail the stage, as leaveOutFailing() says.
    template <Bounds bounds>
    Block judged(const KernelStage& stage, Block block, const Verdict& verdict) const {
        block.alive = verdict.passed;
        if constexpr (bounds == Bounds::upper) {
            block.alive = verdict.open;
        } else {
            for (std::uint32_t open = verdict.open; open != 0; open &= open - 1) {
                const int lane = __builtin_ctz(open);
                if (passesExactly(stage, block, lane))
                    block.alive |= std::uint32_t{1} << lane;
            }
        }
        return block;
    }

    /// Appends a block that lies behind all others. Windows that fit into the block before join it,
    /// and a block begins with its first window, so that the fewer windows are left, the fewer
    /// blocks are.
    [[gnu::always_inline]] void keep(Block block) {
        // Which windows live cannot be foretold, so that nothing here decides by a jump.
        Block& last = (blocks + blockCount)[-1];
        std::int32_t distance = wordBits - 1; // too far to join
        if (last.y == block.y && block.x - last.x < distance)
            distance = block.x - last.x;
        const auto joining =
            static_cast<std::uint32_t>(std::uint64_t{block.alive} << distance) & allLanes;
        last.alive |= joining;
        const std::uint64_t left = block.alive ^ (std::uint64_t{joining} >> distance);
        const int skipped = __builtin_ctzll(left | (std::uint64_t{1} << lanes));
        block.sums += skipped;
        block.contrast += skipped;
        block.alive = static_cast<std::uint32_t>(left >> skipped);
        block.x += skipped;
        blocks[blockCount] = block;
        blockCount += left != 0 ? 1 : 0;
    }

    static constexpr std::uint32_t allLanes =
        static_cast<std::uint32_t>((std::uint64_t{1} << lanes) - 1);

    const KernelPicture& picture;
    const KernelCascade& cascade;
    const KernelListener& listener;
    std::size_t words;     // of a row
    std::uint64_t* valid;  // windows of a row with enough contrast
    std::uint64_t* passed; // windows of a row that passed the first stage
    Block* blocks;
    std::size_t blockCount = 0;
    std::int16_t* contrast; // of the strip's rows, less the offset
};

std::size_t stripBytes(std::size_t windowsX) {
    return Search::bytes(Search::wordsOf(static_cast<int>(windowsX)));
}

void search(const KernelPicture& picture, const KernelCascade& cascade, const KernelMemory& memory,
            const KernelListener& listener) {
    Search(picture, cascade, memory, listener).run();
}

void narrow(const std::int32_t* sums, std::uint16_t* sums16, std::size_t count, std::size_t stride,
            int step) {
    if (step == 1) {
        for (std::size_t i = 0; i < count; ++i)
            sums16[i] = static_cast<std::uint16_t>(sums[i]);
        return;
    }
    std::uint16_t* odd = sums16 + stride / 2;
    for (std::size_t i = 0; i < count / 2; ++i) {
        sums16[i] = static_cast<std::uint16_t>(sums[2 * i]);
        odd[i] = static_cast<std::uint16_t>(sums[2 * i + 1]);
    }
    if (count % 2 != 0)
        sums16[count / 2] = static_cast<std::uint16_t>(sums[count - 1]);
}

/// `from` with its elements moved up by some places, and 0 in the first ones.
template <int places, int... at>
inline Words movedUp(Words from, Numbered<at...>) {
    return __builtin_shufflevector(Words{}, from, (at + wordLanes - places)...);
}

/// Each element with all elements before it.
inline Words runningSums(Words numbers) {
    constexpr CountUp<wordLanes>::Result all;
    numbers += movedUp<1>(numbers, all);
    numbers += movedUp<2>(numbers, all);
    if constexpr (wordLanes > 4)
        numbers += movedUp<4>(numbers, all);
    return numbers;
}

void addSquares(const unsigned char* pixels, const std::int32_t* above, std::int32_t* sums,
                std::size_t count) {
    Words before = {};
    for (std::size_t x = 0; x < count; x += wordLanes) {
        const auto pixel = __builtin_convertvector(loadAs<Bytes>(pixels + x), Squares);
        const Words squares = runningSums(__builtin_convertvector(pixel * pixel, Words));
        const Words sum = loadAs<Words>(above + x + 1) + before + squares;
        __builtin_memcpy(sums + x + 1, &sum, sizeof sum);
        before += squares[wordLanes - 1] - Words{};
    }
}

} // namespace

extern const CascadeKernels kernels;
const CascadeKernels kernels = {LUMENO_KERNELS_NAME, stripBytes, search, narrow, addSquares};

} // namespace LUMENO_KERNELS
