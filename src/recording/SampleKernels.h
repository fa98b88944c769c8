// The inner loops that every sample of an export passes through.
#pragma once

#include <cstddef>
#include <cstdint>

namespace deckmate {

/// One implementation of the inner loops. All give the same bits; they differ in speed only, and
/// the processor decides which one runs. Samples are floats in interleaved stereo pairs, full scale
/// 1.0. Buffers need no alignment; nothing outside the stated counts is read or written.
/// Thread: any. Allocates and locks nothing.
struct SampleKernels {
    const char* name;

    /// `count` signed little-endian 24-bit samples to floats: times 2^-23.
    void (*unpackPcm24)(const std::uint8_t* bytes, float* samples, std::size_t count);

    /// In each pair M, S becomes M + S * sideLevel, M - S * sideLevel, each operation rounded.
    void (*decodeMidSide)(float* pairs, std::size_t frames, float sideLevel);

    /// Divides the first of each pair by `left`, the second by `right`; both are not 0.
    void (*divide)(float* pairs, std::size_t frames, float left, float right);

    /// Raises `*left` and `*right` to the largest magnitude of their channel; ignores NaN.
    void (*raisePeaks)(const float* pairs, std::size_t frames, float* left, float* right);

    /// `count` floats to little-endian 24-bit samples: times 8388607 truncated toward zero for
    /// -1 < x < 1, 0x7FFFFF from 1 upward, 0x800000 from -1 downward and for NaN.
    void (*packPcm24)(const float* samples, std::uint8_t* bytes, std::size_t count);

    /// Plain C++, for every processor.
    static const SampleKernels& portable();
    /// Null where the processor, or the architecture, has no AVX2.
    static const SampleKernels* avx2();
    /// The fastest one here. The environment variable H8_KERNELS=portable keeps to the plain one.
    static const SampleKernels& active();
};

} // namespace deckmate
