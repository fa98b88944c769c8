#include "platform/PcmFloats.h"

#include <bit>
#include <cstring>

namespace deckmate {

static_assert(std::endian::native == std::endian::little, "samples are copied as they lie");

namespace {

template <class Sample>
Sample sampleAt(const std::uint8_t* bytes, std::size_t index) {
    Sample sample;
    std::memcpy(&sample, bytes + index * sizeof sample, sizeof sample);
    return sample;
}

template <class Sample>
void scaled(const std::uint8_t* bytes, std::size_t samples, float factor, float* floats) {
    for (std::size_t i = 0; i < samples; ++i) {
        floats[i] = static_cast<float>(sampleAt<Sample>(bytes, i)) * factor;
    }
}

void scaled24(const std::uint8_t* bytes, std::size_t samples, float* floats) {
    for (std::size_t i = 0; i < samples; ++i, bytes += 3) {
        // In the upper three bytes of a word, the sign is where it belongs.
        const std::uint32_t word = std::uint32_t{bytes[0]} << 8 | std::uint32_t{bytes[1]} << 16 |
                                   std::uint32_t{bytes[2]} << 24;
        floats[i] = static_cast<float>(static_cast<std::int32_t>(word)) * 0x1p-31F;
    }
}

} // namespace

std::uint32_t sampleBytes(const StreamDescription& format) {
    return format.channelsPerFrame > 0 ? format.bytesPerFrame / format.channelsPerFrame : 0;
}

bool canBecomeFloats(const StreamDescription& format) {
    const std::uint32_t bits = format.bitsPerChannel;
    const std::uint64_t bytes = (std::uint64_t{bits} + 7) / 8;
    const bool isKnown = format.isFloat() ? bits == 32 || bits == 64 : bits >= 1 && bits <= 32;
    return isKnown && format.channelsPerFrame > 0 &&
           format.bytesPerFrame == bytes * format.channelsPerFrame;
}

void toFloats(const StreamDescription& format, const std::uint8_t* bytes, std::size_t samples,
              float* floats) noexcept {
    switch (sampleBytes(format)) {
    case 1:
        for (std::size_t i = 0; i < samples; ++i) {
            floats[i] = static_cast<float>(bytes[i] - 128) * 0x1p-7F;
        }
        break;
    case 2:
        scaled<std::int16_t>(bytes, samples, 0x1p-15F, floats);
        break;
    case 3:
        scaled24(bytes, samples, floats);
        break;
    case 4:
        if (format.isFloat()) {
            std::memcpy(floats, bytes, samples * sizeof *floats);
        } else {
            scaled<std::int32_t>(bytes, samples, 0x1p-31F, floats);
        }
        break;
    default:
        for (std::size_t i = 0; i < samples; ++i) {
            floats[i] = static_cast<float>(sampleAt<double>(bytes, i));
        }
        break;
    }
}

} // namespace deckmate
