#pragma once

// Included by cascade_kernels.cpp only, once for each instruction set.
//
// Nothing else of the standard library is included: its inline functions, compiled here for a newer
// processor, could be the ones that the whole program is linked with.
#include <cstdint>
#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace LUMENO_KERNELS {
namespace {

#if defined(__AVX2__)
constexpr int lanes = 16; // with AVX-512 as well: of 32 windows fewer are still alive
#else
constexpr int lanes = 8;
#endif

using Sums = std::uint16_t __attribute__((vector_size(lanes * 2)));
using Numbers = std::int16_t __attribute__((vector_size(lanes * 2)));

/// Pixels, their squares and the sums of those.
constexpr int wordLanes = lanes / 2;
using Bytes = std::uint8_t __attribute__((vector_size(wordLanes)));
using Squares = std::uint16_t __attribute__((vector_size(wordLanes * 2)));
using Words = std::uint32_t __attribute__((vector_size(wordLanes * 4)));

/// The numbers 0, 1, 2, ... up to a count as template arguments.
template <int... numbers>
struct Numbered {};
template <int count, int... above>
struct CountUp : CountUp<count - 1, count - 1, above...> {};
template <int... numbers>
struct CountUp<0, numbers...> {
    using Result = Numbered<numbers...>;
};

template <typename Vector, typename Element>
inline Vector loadAs(const Element* from) {
    Vector value;
    __builtin_memcpy(&value, from, sizeof value);
    return value;
}

inline Sums load(const std::uint16_t* from) {
    return loadAs<Sums>(from);
}

inline Numbers load(const std::int16_t* from) {
    return loadAs<Numbers>(from);
}

#if defined(__AVX2__)

inline Numbers highProduct(Numbers a, Numbers b) {
    return (Numbers)_mm256_mulhi_epi16((__m256i)a, (__m256i)b);
}
inline Numbers difference(Numbers a, Numbers b) {
    return (Numbers)_mm256_subs_epi16((__m256i)a, (__m256i)b);
}
inline std::uint32_t bitsOf(Numbers mask) {
#if defined(__AVX512BW__) && defined(__AVX512VL__)
    return _mm256_movepi16_mask((__m256i)mask);
#else
    const __m128i low = _mm256_castsi256_si128((__m256i)mask);
    const __m128i high = _mm256_extracti128_si256((__m256i)mask, 1);
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(low, high)));
#endif
}

#elif defined(__SSE2__)

inline Numbers highProduct(Numbers a, Numbers b) {
    return (Numbers)_mm_mulhi_epi16((__m128i)a, (__m128i)b);
}
inline Numbers difference(Numbers a, Numbers b) {
    return (Numbers)_mm_subs_epi16((__m128i)a, (__m128i)b);
}
inline std::uint32_t bitsOf(Numbers mask) {
    const __m128i bytes = _mm_packs_epi16((__m128i)mask, _mm_setzero_si128());
    return static_cast<std::uint32_t>(_mm_movemask_epi8(bytes));
}

#else

inline Numbers highProduct(Numbers a, Numbers b) {
    Numbers result;
    for (int i = 0; i < lanes; ++i)
        result[i] = static_cast<std::int16_t>((int{a[i]} * int{b[i]}) >> 16);
    return result;
}
inline Numbers difference(Numbers a, Numbers b) {
    Numbers result;
    for (int i = 0; i < lanes; ++i) {
        const int value = int{a[i]} - int{b[i]};
        result[i] =
            static_cast<std::int16_t>(value < -32768 ? -32768 : (value > 32767 ? 32767 : value));
    }
    return result;
}
inline std::uint32_t bitsOf(Numbers mask) {
    std::uint32_t bits = 0;
    for (int i = 0; i < lanes; ++i)
        bits |= static_cast<std::uint32_t>(mask[i] != 0) << i;
    return bits;
}

#endif

/// The sum, and where the bound is above the value the weight as well.
inline Numbers addWhereAbove(Numbers sum, Numbers weight, Numbers bound, Numbers value) {
#if defined(__AVX512BW__) && defined(__AVX512VL__)
    const __mmask16 above = _mm256_cmpgt_epi16_mask((__m256i)bound, (__m256i)value);
    return (Numbers)_mm256_mask_add_epi16((__m256i)sum, above, (__m256i)sum, (__m256i)weight);
#else
    return sum + ((bound > value) & weight);
#endif
}

} // namespace
} // namespace LUMENO_KERNELS
