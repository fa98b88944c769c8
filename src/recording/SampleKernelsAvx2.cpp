// Only functions marked AVX2 use it, so that this file links into programs for every x86-64.
#include "recording/SampleKernels.h"

#if defined(__x86_64__)

#include <immintrin.h>

#define AVX2 __attribute__((target("avx2")))

namespace deckmate {

namespace wide {
namespace {

// Eight samples are 24 bytes, handled as two 16-byte halves that start 12 bytes apart: the second
// half touches 4 bytes beyond the eighth sample, so two more samples must follow it.
constexpr std::size_t step = 8;
constexpr std::size_t touched = step + 2;

AVX2 void unpackPcm24(const std::uint8_t* bytes, float* samples, std::size_t count) {
    // Each sample to the upper three bytes of its lane; the shift brings it down with its sign.
    const __m256i spread = _mm256_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, //
                                            -1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11);
    const __m256 scale = _mm256_set1_ps(0x1p-23F);
    std::size_t i = 0;
    for (; i + touched <= count; i += step) {
        const auto* source = reinterpret_cast<const __m128i*>(bytes + 3 * i);
        const auto* second = reinterpret_cast<const __m128i*>(bytes + 3 * i + 12);
        const __m256i packed = _mm256_inserti128_si256(
            _mm256_castsi128_si256(_mm_loadu_si128(source)), _mm_loadu_si128(second), 1);
        const __m256i whole = _mm256_srai_epi32(_mm256_shuffle_epi8(packed, spread), 8);
        _mm256_storeu_ps(samples + i, _mm256_mul_ps(_mm256_cvtepi32_ps(whole), scale));
    }
    SampleKernels::portable().unpackPcm24(bytes + 3 * i, samples + i, count - i);
}

AVX2 void decodeMidSide(float* pairs, std::size_t frames, float sideLevel) {
    constexpr std::size_t framesPerStep = step / 2;
    const __m256 level = _mm256_set1_ps(sideLevel);
    std::size_t frame = 0;
    for (; frame + framesPerStep <= frames; frame += framesPerStep) {
        float* at = pairs + 2 * frame;
        const __m256 both = _mm256_loadu_ps(at);
        const __m256 mid = _mm256_moveldup_ps(both);
        const __m256 side = _mm256_mul_ps(_mm256_movehdup_ps(both), level);
        const __m256 left = _mm256_add_ps(mid, side);
        const __m256 right = _mm256_sub_ps(mid, side);
        _mm256_storeu_ps(at, _mm256_blend_ps(left, right, 0b10101010));
    }
    SampleKernels::portable().decodeMidSide(pairs + 2 * frame, frames - frame, sideLevel);
}

AVX2 void divide(float* pairs, std::size_t frames, float left, float right) {
    constexpr std::size_t framesPerStep = step / 2;
    const __m256 divisors = _mm256_setr_ps(left, right, left, right, left, right, left, right);
    std::size_t frame = 0;
    for (; frame + framesPerStep <= frames; frame += framesPerStep) {
        float* at = pairs + 2 * frame;
        _mm256_storeu_ps(at, _mm256_div_ps(_mm256_loadu_ps(at), divisors));
    }
    SampleKernels::portable().divide(pairs + 2 * frame, frames - frame, left, right);
}

AVX2 void raisePeaks(const float* pairs, std::size_t frames, float* left, float* right) {
    constexpr std::size_t framesPerStep = step / 2;
    const __m256 magnitude = _mm256_castsi256_ps(_mm256_set1_epi32(0x7FFFFFFF));
    __m256 peaks = _mm256_setr_ps(*left, *right, *left, *right, *left, *right, *left, *right);
    std::size_t frame = 0;
    for (; frame + framesPerStep <= frames; frame += framesPerStep) {
        const __m256 sample = _mm256_and_ps(_mm256_loadu_ps(pairs + 2 * frame), magnitude);
        // The second operand comes through when the first is NaN.
        peaks = _mm256_max_ps(sample, peaks);
    }
    float lanes[step];
    _mm256_storeu_ps(lanes, peaks);
    for (std::size_t lane = 0; lane < step; lane += 2) {
        *left = lanes[lane] > *left ? lanes[lane] : *left;
        *right = lanes[lane + 1] > *right ? lanes[lane + 1] : *right;
    }
    SampleKernels::portable().raisePeaks(pairs + 2 * frame, frames - frame, left, right);
}

// x * 8388607 = x * 2^23 - x, and x * 2^23 is exact. With y = |x| * 2^23 = n + f (n whole,
// 0 <= f < 1) and |x| < 1, the product n + (f - |x|) truncates to n where f >= |x| and to n - 1
// elsewhere: exact without a product in double.
AVX2 __m256i toPcm24(__m256 sample) {
    const __m256 signBit = _mm256_set1_ps(-0.0F);
    const __m256 one = _mm256_set1_ps(1.0F);
    const __m256 magnitude = _mm256_min_ps(_mm256_andnot_ps(signBit, sample), one);
    const __m256 scaled = _mm256_mul_ps(magnitude, _mm256_set1_ps(0x1p23F));
    const __m256i whole = _mm256_cvttps_epi32(scaled);
    const __m256 fraction = _mm256_sub_ps(scaled, _mm256_cvtepi32_ps(whole));
    const __m256 borrow = _mm256_cmp_ps(fraction, magnitude, _CMP_LT_OQ); // -1 where true
    const __m256i truncated = _mm256_add_epi32(whole, _mm256_castps_si256(borrow));
    const __m256i whereInside = _mm256_sign_epi32(truncated, _mm256_castps_si256(sample));
    // Also true for NaN.
    const __m256 atBottom = _mm256_cmp_ps(sample, _mm256_set1_ps(-1.0F), _CMP_NGT_UQ);
    return _mm256_blendv_epi8(whereInside, _mm256_set1_epi32(-0x800000),
                              _mm256_castps_si256(atBottom));
}

AVX2 void packPcm24(const float* samples, std::uint8_t* bytes, std::size_t count) {
    const __m256i gather = _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1,
                                            0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    std::size_t i = 0;
    for (; i + touched <= count; i += step) {
        const __m256i packed = _mm256_shuffle_epi8(toPcm24(_mm256_loadu_ps(samples + i)), gather);
        // The four zero bytes behind each half are overwritten by what follows.
        auto* target = reinterpret_cast<__m128i*>(bytes + 3 * i);
        auto* second = reinterpret_cast<__m128i*>(bytes + 3 * i + 12);
        _mm_storeu_si128(target, _mm256_castsi256_si128(packed));
        _mm_storeu_si128(second, _mm256_extracti128_si256(packed, 1));
    }
    SampleKernels::portable().packPcm24(samples + i, bytes + 3 * i, count - i);
}

} // namespace
} // namespace wide

const SampleKernels* SampleKernels::avx2() {
    static constexpr SampleKernels kernels{"avx2",       wide::unpackPcm24, wide::decodeMidSide,
                                           wide::divide, wide::raisePeaks,  wide::packPcm24};
    return __builtin_cpu_supports("avx2") != 0 ? &kernels : nullptr;
}

} // namespace deckmate

#else

const deckmate::SampleKernels* deckmate::SampleKernels::avx2() {
    return nullptr;
}

#endif
