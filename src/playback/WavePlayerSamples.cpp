#include "playback/WavePlayer.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace deckmate {

namespace {

constexpr double fullScale = 8388608.0; // 2^23
constexpr std::size_t frame24Bytes = 6;
constexpr std::size_t floatFrameBytes = 8;

std::int32_t signed24(const std::uint8_t* bytes) {
    const std::uint32_t word = std::uint32_t{bytes[0]} << 8 | std::uint32_t{bytes[1]} << 16 |
                               std::uint32_t{bytes[2]} << 24;
    return static_cast<std::int32_t>(word) >> 8;
}

void write24(std::uint32_t value, std::uint8_t* bytes) {
    bytes[0] = static_cast<std::uint8_t>(value);
    bytes[1] = static_cast<std::uint8_t>(value >> 8);
    bytes[2] = static_cast<std::uint8_t>(value >> 16);
}

/// The low bits of a number cut toward zero; 0 for what is no number or beyond 64 bits.
std::uint32_t lowBits(double value) {
    constexpr double limit = 0x1p63;
    return std::abs(value) < limit ? static_cast<std::uint32_t>(static_cast<std::int64_t>(value))
                                   : 0;
}

std::uint32_t clipped(float sample) {
    const double value = sample * fullScale;
    if (std::abs(value) > fullScale) {
        return sample > 0.0F ? 0x7FFFFF : 0x800000;
    }
    return lowBits(value);
}

/// Frames that can be read from the float buffer and written to a 24-bit one.
std::size_t framesIn(const AudioQueueBuffer& buffer, const WavArrayFloat32& floats) {
    return std::min<std::size_t>(buffer.packetDescriptionCount, floats.length() / 2);
}

} // namespace

WavArrayFloat32& WavePlayer::S_24_BIT_SAMPLE_IN_FLOAT() {
    static WavArrayFloat32 samples;
    return samples;
}

void WavePlayer::processSampleBuffer(AudioQueueBuffer& buffer, const StreamDescription& info,
                                     std::int64_t /*curPackage*/) {
    // A mono buffer has no pairs.
    if (info.channelsPerFrame < 2) {
        return;
    }
    const int bits = static_cast<int>(info.bitsPerChannel);
    std::size_t frames = buffer.packetDescriptionCount;
    float* samples = nullptr;
    if (bits == 24) {
        prepareFloatBuffer(buffer);
        convertByte24bit2Float(buffer);
        samples = S_24_BIT_SAMPLE_IN_FLOAT().bytes();
        frames = framesIn(buffer, S_24_BIT_SAMPLE_IN_FLOAT());
    } else if (bits == 32 && info.isFloat()) {
        samples = reinterpret_cast<float*>(buffer.bytes);
        frames = std::min<std::size_t>(frames, buffer.byteSize / floatFrameBytes);
    } else {
        return;
    }

    const std::shared_ptr<WaveFileReader> reader = this->reader();
    if (reader && reader->isBoMSFormat()) {
        angleinfo_.prevAngle = angleinfo_.curAngle;
        angleinfo_.curAngle = angle_;
        WaveFileReader::COM_MSDecodeForPlaying(bits, samples, frames, &angleinfo_);
    }
    dbinfo_.prevGain = dbinfo_.curGain;
    dbinfo_.curGain = -gain_;
    WaveFileReader::COM_AdjustdBForPlaying(bits, samples, frames, &dbinfo_);
    if (bits == 24) {
        convertFloat2Byte24Bit(buffer);
    }
}

void WavePlayer::prepareFloatBuffer(const AudioQueueBuffer& buffer) {
    WavArrayFloat32& floats = S_24_BIT_SAMPLE_IN_FLOAT();
    const std::uint64_t needed = std::uint64_t{buffer.packetDescriptionCount} * 2;
    if (floats.length() < needed) {
        // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): a WavArray owns malloc's blocks
        void* grown = std::realloc(floats.bytes(), needed * sizeof(float));
        if (grown == nullptr) {
            return; // as many frames are processed as there is room for
        }
        floats.setLength(needed);
        floats.setBytes(static_cast<float*>(grown));
    }
    if (floats.length() > 0) {
        std::memset(floats.bytes(), 0, floats.length());
    }
}

void WavePlayer::convertByte24bit2Float(const AudioQueueBuffer& buffer) const {
    WavArrayFloat32& floats = S_24_BIT_SAMPLE_IN_FLOAT();
    const std::shared_ptr<WaveFileReader> reader = this->reader();
    const std::size_t stride = reader ? reader->header().BitsPerSample / 8 : 0;
    const std::size_t valid = std::min(buffer.byteSize, buffer.capacity);
    const auto sampleAt = [&](std::size_t offset) {
        return offset + 3 <= valid ? static_cast<float>(signed24(buffer.bytes + offset)) * 0x1p-23F
                                   : 0.0F;
    };
    const std::size_t frames = framesIn(buffer, floats);
    for (std::size_t i = 0; i < frames; ++i) {
        const std::size_t cursor = 2 * stride * i;
        floats.bytes()[2 * i] = sampleAt(cursor);
        floats.bytes()[2 * i + 1] = sampleAt(cursor + stride);
    }
}

void WavePlayer::convertFloat2Byte24Bit(AudioQueueBuffer& buffer) {
    const WavArrayFloat32& floats = S_24_BIT_SAMPLE_IN_FLOAT();
    const std::size_t frames =
        std::min<std::size_t>(framesIn(buffer, floats), buffer.capacity / frame24Bytes);
    for (std::size_t i = 0; i < frames; ++i) {
        std::uint8_t* frame = buffer.bytes + frame24Bytes * i;
        write24(clipped(floats.bytes()[2 * i]), frame);
        write24(lowBits(floats.bytes()[2 * i + 1] * fullScale), frame + 3);
    }
}

} // namespace deckmate
