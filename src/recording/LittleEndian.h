// Little-endian integers in byte buffers, as RIFF files hold them.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace deckmate {

static_assert(std::endian::native == std::endian::little,
              "samples and headers are copied without swapping bytes");

inline std::uint16_t loadU16(const std::uint8_t* bytes) {
    std::uint16_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

inline std::uint32_t loadU32(const std::uint8_t* bytes) {
    std::uint32_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

inline std::uint64_t loadU64(const std::uint8_t* bytes) {
    std::uint64_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

/// A signed 24-bit integer.
inline std::int32_t loadS24(const std::uint8_t* bytes) {
    const std::uint32_t low = static_cast<std::uint32_t>(bytes[0]) |
                              (static_cast<std::uint32_t>(bytes[1]) << 8) |
                              (static_cast<std::uint32_t>(bytes[2]) << 16);
    return static_cast<std::int32_t>(low << 8) >> 8;
}

inline float loadF32(const std::uint8_t* bytes) {
    float value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

/// The low three bytes of `value`.
inline void store24(std::uint8_t* bytes, std::int32_t value) {
    const auto bits = static_cast<std::uint32_t>(value);
    bytes[0] = static_cast<std::uint8_t>(bits);
    bytes[1] = static_cast<std::uint8_t>(bits >> 8);
    bytes[2] = static_cast<std::uint8_t>(bits >> 16);
}

} // namespace deckmate
