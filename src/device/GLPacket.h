// One Universal MIDI Packet to send.
#pragma once

#include <array>
#include <cstdint>

namespace deckmate {

/// Of message type 3 (7-bit System Exclusive data): type, group, status, count and up to six bytes.
struct GLPacket {
    std::array<std::uint32_t, 2> data = {};
    std::uint8_t size = 0; ///< words used
};

} // namespace deckmate
