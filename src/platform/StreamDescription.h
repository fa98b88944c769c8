// What the samples of an audio file or an output queue look like.
#pragma once

#include <cstdint>

namespace deckmate {

/// 0 for success; an errno where the system failed; a negative number of AudioError otherwise.
using AudioStatus = std::int32_t;

enum AudioError : AudioStatus {
    audioNotOpen = -1,     ///< there is no file
    audioUnsupported = -2, ///< not a WAVE file, or not one of plain samples
    audioReadFailed = -3,  ///< for a reason that the system didn't tell
    audioQueueFull = -4,   ///< more buffers than a queue takes
    audioBufferInUse = -5, ///< the buffer is queued already
};

/// The format of linear PCM: in a packet there is one frame, one sample of each channel, and the
/// samples are little-endian. 40 bytes.
struct StreamDescription {
    double sampleRate = 0; ///< frames per second
    std::uint32_t formatId = 0;
    std::uint32_t formatFlags = 0;
    std::uint32_t bytesPerPacket = 0;
    std::uint32_t framesPerPacket = 0;
    std::uint32_t bytesPerFrame = 0;
    std::uint32_t channelsPerFrame = 0;
    std::uint32_t bitsPerChannel = 0;
    std::uint32_t reserved = 0;

    bool isFloat() const { return (formatFlags & floatFlag) != 0; }

    static constexpr std::uint32_t linearPcm = 0x6C70636D; ///< "lpcm"
    static constexpr std::uint32_t floatFlag = 1U << 0;
    static constexpr std::uint32_t signedIntegerFlag = 1U << 2;
    static constexpr std::uint32_t packedFlag = 1U << 3;
};
static_assert(sizeof(StreamDescription) == 40);

/// Where a packet of varying size lies in a buffer.
struct PacketDescription {
    std::int64_t startOffset = 0;
    std::uint32_t framesInPacket = 0; ///< where that varies too, else 0
    std::uint32_t byteSize = 0;
};

} // namespace deckmate
