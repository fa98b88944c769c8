// The fixed header record of a recording.
#pragma once

#include <cstdint>

namespace deckmate {

/// The RIFF header, the `fmt ` fields and the place of the `data` chunk, as the file declares them:
/// nothing here is checked against the file's real length. Offsets are in bytes from the file's
/// start and are added in 32-bit arithmetic.
struct WaveHeader {
    std::uint32_t ChunkID = 0;       ///< bytes 0..3, little-endian: 0x46464952 is "RIFF"
    std::uint32_t ChunkSize = 0;     ///< bytes 4..7
    std::uint32_t Format = 0;        ///< bytes 8..11: 0x45564157 is "WAVE"
    std::uint32_t Subchunk1ID = 0;   ///< "fmt " once such a chunk was met
    std::uint32_t Subchunk1Size = 0; ///< declared size of the `fmt ` chunk
    std::uint16_t AudioFormat = 0;   ///< 1 = integer PCM, 3 = IEEE float
    std::uint16_t NumChannels = 0;
    std::uint32_t SampleRate = 0; ///< frames per second
    std::uint32_t ByteRate = 0;
    std::uint16_t BlockAlign = 0;
    std::uint16_t BitsPerSample = 0;
    std::uint32_t dataChunkPosition = 0; ///< first byte of the `data` body; 0 = no such chunk
    std::uint32_t dataChunkLength = 0;   ///< declared size of the `data` chunk
    std::uint32_t dataChunkEnd = 0;      ///< dataChunkPosition + dataChunkLength, may wrap
};

} // namespace deckmate
