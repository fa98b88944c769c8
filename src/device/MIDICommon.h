// Helpers of the link to the recorder: other threads, and Universal MIDI Packets.
#pragma once

#include "device/GLPacket.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace deckmate {

class MIDICommon {
public:
    /// Calls `block` on another thread, at the same time as others, and returns at once. Thread:
    /// any.
    static void runBackground(std::function<void()> block);
    /// Calls `block` on the main thread and returns when it has run: at once if this is the main
    /// thread. Must not be used by a thread that the main thread waits for. Thread: any.
    static void runOnUIThread(std::function<void()> block);

    /// A System Exclusive message as packets of message type 3 ("Universal MIDI Packet (UMP)
    /// Format", 7.7), group 0. Nothing for what doesn't begin with F0; the last byte counts as F7
    /// whatever it is. Thread: main.
    static std::optional<std::vector<GLPacket>>
    convertByteToPacket(std::span<const std::uint8_t> bytes);
    /// One such packet of up to six bytes. Thread: main.
    static GLPacket createPackage(std::uint8_t group, std::uint8_t status,
                                  std::span<const std::uint8_t> real_data);

    /// Fields of a packet's first word. In message type 3 the channel is the count of bytes.
    static std::uint32_t messageType(std::uint32_t word) { return word >> 28; }
    static std::uint32_t messageGroup(std::uint32_t word) { return word >> 24 & 0xF; }
    static std::uint32_t messageStatus(std::uint32_t word) { return word >> 20 & 0xF; }
    static std::uint32_t messageChannel(std::uint32_t word) { return word >> 16 & 0xF; }
};

} // namespace deckmate
