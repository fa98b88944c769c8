#include "recording/SampleKernels.h"

#include "recording/LittleEndian.h"

#include <cmath>
#include <cstdlib>
#include <string_view>

namespace deckmate {

namespace plain {
namespace {

void unpackPcm24(const std::uint8_t* bytes, float* samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<float>(loadS24(bytes + 3 * i)) * 0x1p-23F;
    }
}

void decodeMidSide(float* pairs, std::size_t frames, float sideLevel) {
    for (std::size_t i = 0; i < 2 * frames; i += 2) {
        const float mid = pairs[i];
        const float side = pairs[i + 1] * sideLevel;
        pairs[i] = mid + side;
        pairs[i + 1] = mid - side;
    }
}

void divide(float* pairs, std::size_t frames, float left, float right) {
    for (std::size_t i = 0; i < 2 * frames; i += 2) {
        pairs[i] = pairs[i] / left;
        pairs[i + 1] = pairs[i + 1] / right;
    }
}

float raised(float peak, float sample) {
    const float magnitude = std::fabs(sample);
    return magnitude > peak ? magnitude : peak;
}

void raisePeaks(const float* pairs, std::size_t frames, float* left, float* right) {
    float peakLeft = *left;
    float peakRight = *right;
    for (std::size_t i = 0; i < 2 * frames; i += 2) {
        peakLeft = raised(peakLeft, pairs[i]);
        peakRight = raised(peakRight, pairs[i + 1]);
    }
    *left = peakLeft;
    *right = peakRight;
}

std::int32_t toPcm24(float sample) {
    if (sample >= 1.0F) {
        return 0x7FFFFF;
    }
    if (!(sample > -1.0F)) {
        return -0x800000;
    }
    return static_cast<std::int32_t>(static_cast<double>(sample) * 8388607.0);
}

void packPcm24(const float* samples, std::uint8_t* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        store24(bytes + 3 * i, toPcm24(samples[i]));
    }
}

} // namespace
} // namespace plain

namespace {

const SampleKernels& fastest() {
    const char* forced = std::getenv("H8_KERNELS");
    const SampleKernels* vectorised = SampleKernels::avx2();
    if (vectorised == nullptr || (forced != nullptr && std::string_view(forced) == "portable")) {
        return SampleKernels::portable();
    }
    return *vectorised;
}

} // namespace

const SampleKernels& SampleKernels::portable() {
    static constexpr SampleKernels kernels{"portable",    plain::unpackPcm24, plain::decodeMidSide,
                                           plain::divide, plain::raisePeaks,  plain::packPcm24};
    return kernels;
}

const SampleKernels& SampleKernels::active() {
    static const SampleKernels& chosen = fastest();
    return chosen;
}

} // namespace deckmate
