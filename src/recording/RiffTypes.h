// Chunk identifiers and layouts of RIFF/WAVE files ("Multimedia Programming Interface and Data
// Specifications 1.0", IBM and Microsoft, 1991).
#pragma once

#include <cstdint>

namespace deckmate::riff {

/// The four characters of an identifier as the little-endian integer that a file holds: the first
/// character is the low byte.
constexpr std::uint32_t fourCC(const char (&text)[5]) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(text[0])) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[1])) << 8 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[2])) << 16 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[3])) << 24;
}

inline constexpr std::uint32_t RIFF = fourCC("RIFF");
inline constexpr std::uint32_t WAVE = fourCC("WAVE");
inline constexpr std::uint32_t FMT = fourCC("fmt ");
inline constexpr std::uint32_t DATA = fourCC("data");
/// Broadcast extension (EBU Tech 3285).
inline constexpr std::uint32_t BEXT = fourCC("bext");

/// Bytes of "RIFF", size, "WAVE".
inline constexpr std::uint32_t fileHeaderSize = 12;
/// Bytes of a chunk's identifier and size.
inline constexpr std::uint32_t chunkHeaderSize = 8;

/// Format tags of a `fmt ` chunk.
inline constexpr std::uint16_t integerPcm = 1;
inline constexpr std::uint16_t ieeeFloat = 3;

} // namespace deckmate::riff
