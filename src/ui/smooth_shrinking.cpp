#include "ui/smooth_shrinking.h"

#include "frames/picture_pool.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>

namespace {

constexpr int weightBits = 14;
constexpr int droppedBits = 4;
constexpr int shownBits = 2 * weightBits - droppedBits;

/// What a target pixel (or row) is made of: `count` neighbours from `first` on.
struct Span {
    int first;
    int count;
    int firstWeight;
    int middleWeight;
    int lastWeight;

    int weight(int index) const {
        if (index >= count)
            return 0;
        if (index == 0)
            return firstWeight;
        return index == count - 1 ? lastWeight : middleWeight;
    }
};

/// The spans for shrinking `from` pixels to `to`; positions have 16 bits behind the point. The
/// weights of a span add up to 1 << weightBits.
std::vector<Span> spansFor(int from, int to) {
    std::vector<Span> spans;
    const std::int64_t step = (std::int64_t{from} << 16) / to;
    const auto whole = static_cast<int>(((std::int64_t{to} << weightBits) + from - 1) / from);
    std::int64_t position = 0;
    for (int index = 0; index < to; ++index, position += step) {
        Span span{static_cast<int>(position >> 16), 1, 0, whole, 0};
        span.firstWeight = static_cast<int>(((0x10000 - (position & 0xffff)) * whole) >> 16);
        int rest = (1 << weightBits) - span.firstWeight;
        for (; rest > whole; rest -= whole)
            ++span.count;
        span.lastWeight = rest;
        ++span.count;
        spans.push_back(span);
    }
    return spans;
}

// Pixels are weighted in pairs; one load holds two pairs in either format.
constexpr int loadPairs = 2;
constexpr int loadBytes = 16;

/// How many rows ahead of the one that is shrunk memory is asked for.
constexpr int rowsAhead = 2;

/// A weight for each of two pixels, as the two are multiplied with their values.
std::int32_t pairOf(int low, int high) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(low) |
                                     (static_cast<std::uint32_t>(high) << 16));
}

/// Shrinks rows along x into four 32-bit channels per pixel, two target pixels at a time: one in
/// each half of a register.
class RowShrinker {
public:
    RowShrinker(const QImage& source, int width)
        : bytesPerPixel(source.depth() / 8), rowBytes(source.width() * bytesPerPixel) {
        std::vector<Span> spans = spansFor(source.width(), width);
        if (spans.size() % 2 == 1)
            spans.push_back(spans.back());
        int maximumCount = 0;
        for (const Span& span : spans)
            maximumCount = std::max(maximumCount, span.count);
        pairs = (maximumCount + 1) / 2;
        for (const Span& span : spans)
            starts.push_back(span.first * bytesPerPixel);
        for (std::size_t left = 0; left < spans.size(); left += 2) {
            for (int pair = 0; pair < pairs; ++pair) {
                for (const Span& span : {spans[left], spans[left + 1]})
                    weights.insert(weights.end(), 4,
                                   pairOf(span.weight(2 * pair), span.weight(2 * pair + 1)));
            }
        }
        row.resize(static_cast<std::size_t>(rowBytes + (pairs + loadPairs) * loadBytes));
    }

    /// Writes four values for each target pixel, and for one more when their number is odd. On the
    /// way the memory of a later row is asked for: a new frame lies in no cache of this processor.
    void shrink(const uchar* source, const uchar* later, std::uint32_t* target) {
        // The last loads reach over the row.
        std::memcpy(row.data(), source, static_cast<std::size_t>(rowBytes));
        switch (pairs) {
        case 1:
            return shrinkRow<1>(later, target);
        case 2:
            return shrinkRow<2>(later, target);
        case 3:
            return shrinkRow<3>(later, target);
        default:
            return shrinkRow<0>(later, target);
        }
    }

private:
    /// With a fixed number of pairs for each span, or any number when `fixedPairs` is 0.
    template <int fixedPairs>
    __attribute__((target("avx2"))) void shrinkRow(const uchar* later,
                                                   std::uint32_t* target) const {
        const int count = fixedPairs > 0 ? fixedPairs : pairs;
        const int fourPixels = 4 * bytesPerPixel;
        const __m256i firstPair = channelPairs(0);
        const __m256i secondPair = channelPairs(2);
        const uchar* pixels = row.data();
        const auto* weight = reinterpret_cast<const __m256i*>(weights.data());
        const std::size_t end = starts.size();
        const int* start = starts.data();
        for (std::size_t index = 0; index < end; index += 2) {
            const uchar* left = pixels + start[index];
            const uchar* right = pixels + start[index + 1];
            _mm_prefetch(reinterpret_cast<const char*>(later + start[index]), _MM_HINT_T0);
            __m256i sum = _mm256_setzero_si256();
            for (int pair = 0; pair < count; pair += loadPairs) {
                const __m256i four = _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(right),
                                                         reinterpret_cast<const __m128i*>(left));
                sum = _mm256_add_epi32(sum, weightedPair(four, firstPair, weight++));
                if (pair + 1 < count)
                    sum = _mm256_add_epi32(sum, weightedPair(four, secondPair, weight++));
                left += fourPixels;
                right += fourPixels;
            }
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(target),
                                _mm256_srli_epi32(sum, droppedBits));
            target += 8;
        }
    }

    __attribute__((target("avx2"))) static __m256i weightedPair(__m256i four, __m256i pair,
                                                                const __m256i* weight) {
        return _mm256_madd_epi16(_mm256_shuffle_epi8(four, pair), _mm256_loadu_si256(weight));
    }

    /// Spreads the channels of pixels `pixel` and `pixel + 1` of each load to pairs of 16 bits, in
    /// the order of RGB32 in memory: blue, green, red, nothing.
    __attribute__((target("avx2"))) __m256i channelPairs(int pixel) const {
        const int a = pixel * bytesPerPixel;
        const int b = a + bytesPerPixel;
        const auto at = [](int base, int channel) { return static_cast<char>(base + channel); };
        const int blue = bytesPerPixel == 3 ? 2 : 0;
        const int red = 2 - blue;
        return _mm256_broadcastsi128_si256(_mm_setr_epi8(at(a, blue), -1, at(b, blue), -1, at(a, 1),
                                                         -1, at(b, 1), -1, at(a, red), -1,
                                                         at(b, red), -1, -1, -1, -1, -1));
    }

    int bytesPerPixel;
    int rowBytes;
    int pairs = 1;
    std::vector<int> starts;           ///< First byte of each span.
    std::vector<std::int32_t> weights; ///< One register for each pair of each two spans.
    std::vector<uchar> row;
};

__attribute__((target("avx2"))) inline __m256i load(const std::uint32_t* values) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(values));
}

__attribute__((target("avx2"))) inline __m256i weighted(__m256i values, __m256i weight) {
    return _mm256_mullo_epi32(values, weight);
}

/// The mean of a span's shrunk rows (`fixedCount` of them unless that is 0), weighted and packed to
/// RGB32.
template <int fixedCount>
__attribute__((target("avx2"))) void weighRows(const std::vector<const std::uint32_t*>& rows,
                                               const Span& span, int pixels, QRgb* target) {
    const int count = fixedCount > 0 ? fixedCount : span.count;
    const __m256i opaque = _mm256_set1_epi32(static_cast<int>(0xff000000U));
    const __m256i lowBytes = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    const __m256i firstWeight = _mm256_set1_epi32(span.firstWeight);
    const __m256i middleWeight = _mm256_set1_epi32(span.middleWeight);
    const __m256i lastWeight = _mm256_set1_epi32(span.lastWeight);
    const std::uint32_t* const* row = rows.data();
    for (int pixel = 0; pixel < pixels; pixel += 2) {
        const std::ptrdiff_t at = std::ptrdiff_t{4} * pixel;
        __m256i sum = _mm256_add_epi32(weighted(load(row[0] + at), firstWeight),
                                       weighted(load(row[count - 1] + at), lastWeight));
        if (count > 2) {
            __m256i middle = load(row[1] + at);
            for (int index = 2; index < count - 1; ++index)
                middle = _mm256_add_epi32(middle, load(row[index] + at));
            sum = _mm256_add_epi32(sum, weighted(middle, middleWeight));
        }
        const __m256i bytes = _mm256_or_si256(
            _mm256_shuffle_epi8(_mm256_srli_epi32(sum, shownBits), lowBytes), opaque);
        target[pixel] = static_cast<QRgb>(_mm256_extract_epi32(bytes, 0));
        if (pixel + 1 < pixels)
            target[pixel + 1] = static_cast<QRgb>(_mm256_extract_epi32(bytes, 4));
    }
}

void weigh(const std::vector<const std::uint32_t*>& rows, const Span& span, int pixels,
           QRgb* target) {
    switch (span.count) {
    case 2:
        return weighRows<2>(rows, span, pixels, target);
    case 3:
        return weighRows<3>(rows, span, pixels, target);
    case 4:
        return weighRows<4>(rows, span, pixels, target);
    case 5:
        return weighRows<5>(rows, span, pixels, target);
    default:
        return weighRows<0>(rows, span, pixels, target);
    }
}

QImage shrunk(const QImage& source, const QSize& size) {
    QImage target = PicturePool::shared().take(size, QImage::Format_RGB32);
    if (target.isNull())
        return target;
    RowShrinker shrinker(source, size.width());
    const std::vector<Span> spans = spansFor(source.height(), size.height());
    int maximumCount = 0;
    for (const Span& span : spans)
        maximumCount = std::max(maximumCount, span.count);
    // A ring of as many shrunk rows as one target row needs: row n stands at n modulo their number.
    const auto places = static_cast<std::size_t>(maximumCount);
    const auto stride = (static_cast<std::size_t>(size.width()) + 1) * 4;
    std::vector<std::uint32_t> shrunkRows(places * stride);
    std::vector<const std::uint32_t*> rows(places);
    const auto placeOf = [&](int row) {
        return &shrunkRows[static_cast<std::size_t>(row) % places * stride];
    };
    int next = 0;
    for (int y = 0; y < size.height(); ++y) {
        const Span& span = spans[static_cast<std::size_t>(y)];
        for (int index = 0; index < span.count; ++index) {
            const int row = std::min(span.first + index, source.height() - 1);
            for (; next <= row; ++next) {
                const int later = std::min(next + rowsAhead, source.height() - 1);
                shrinker.shrink(source.constScanLine(next), source.constScanLine(later),
                                placeOf(next));
            }
            rows[static_cast<std::size_t>(index)] = placeOf(row);
        }
        weigh(rows, span, size.width(), reinterpret_cast<QRgb*>(target.scanLine(y)));
    }
    return target;
}

} // namespace

QImage smoothlyShrunk(const QImage& source, const QSize& size) {
    const bool known =
        source.format() == QImage::Format_RGB888 || source.format() == QImage::Format_RGB32;
    const bool smaller = size.width() < source.width() && size.height() < source.height();
    static const bool supported = __builtin_cpu_supports("avx2");
    if (!known || !smaller || size.isEmpty() || !supported)
        return {};
    return shrunk(source, size);
}

#else

QImage smoothlyShrunk(const QImage&, const QSize&) {
    return {};
}

#endif
