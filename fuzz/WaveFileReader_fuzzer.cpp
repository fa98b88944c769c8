// Any bytes as a file: the chunk walk, the frames in both ways of reading them, and the peak scan.
#include "recording/WaveFileReader.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace {

using namespace deckmate;

void require(bool isTrue) {
    if (!isTrue) {
        std::abort();
    }
}

void checkChunks(const WaveFileReader& reader, std::size_t size) {
    if (!reader.chunks()) {
        require(reader.getBextChunk() == nullptr && !reader.isValidFile());
        return;
    }
    std::uint64_t position = 0;
    for (const ChunkInfo& chunk : *reader.chunks()) {
        require(chunk.streamPos > position && chunk.streamPos <= size);
        require(reader.getChunkData(chunk).length() <= size - chunk.streamPos);
        position = chunk.streamPos;
    }
}

/// Single frames and blocks must agree to the bit, and with the count told in advance.
void checkFrames(WaveFileReader& reader) {
    std::uint64_t frames = 0;
    constexpr std::size_t blockFrames = 61;
    std::array<float, 2 * blockFrames> block = {};
    reader.beginReadSample();
    while (const std::size_t count = reader.readFramesFrom(frames, block.data(), blockFrames)) {
        for (std::size_t k = 0; k < count; ++k) {
            float left = 0;
            float right = 0;
            require(reader.readNextSample(&left, &right));
            require(std::bit_cast<std::uint32_t>(left) ==
                    std::bit_cast<std::uint32_t>(block[2 * k]));
            require(std::bit_cast<std::uint32_t>(right) ==
                    std::bit_cast<std::uint32_t>(block[2 * k + 1]));
        }
        frames += count;
    }
    require(reader.isFinishReadSample());
    require(frames == reader.frameCount());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto reader = WaveFileReader::readFromData(std::span(data, size));
    checkChunks(*reader, size);
    checkFrames(*reader);
    reader->setIsBoMSFormat(size % 2 == 0);
    for (const double from : {0.0, 0.001, 1.0 / 3.0, 5.0}) {
        float left = -1;
        float right = -1;
        reader->getSampleLevelMeterFrom(from, from + 1.0 / 30.0, &left, &right, 3.0, 99.5);
        require(left >= 0 && right >= 0);
    }
    return 0;
}
