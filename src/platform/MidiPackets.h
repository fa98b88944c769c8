// MIDI messages on their way: as bytes, and as words of Universal MIDI Packets.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace deckmate {

/// Nanoseconds of the monotonic clock, as packets are stamped with.
std::uint64_t midiTimeStamp();

/// Bytes of one or more MIDI 1.0 messages, or of a piece of a System Exclusive one.
struct MIDIPacket {
    static constexpr std::size_t mostBytes = 256;

    std::uint64_t timeStamp = 0; ///< nanoseconds of the monotonic clock; 0 for now
    std::uint16_t length = 0;    ///< as told; more than `mostBytes` counts, but is not there
    std::array<std::uint8_t, mostBytes> data = {};
};

/// Packets one behind the other in memory of the owner: for each the time stamp (8 bytes), the
/// length (2 bytes) and the data.
class MIDIPacketList {
public:
    /// An empty list that fills `room`, which has to outlive it.
    explicit MIDIPacketList(std::span<std::uint8_t> room) : room_(room) {}

    /// Appends a packet of up to MIDIPacket::mostBytes bytes. NO when there is no room for it.
    bool add(std::uint64_t timeStamp, std::span<const std::uint8_t> data);
    std::uint32_t numPackets() const { return numPackets_; }

    /// Walks through the packets:
    ///
    ///     MIDIPacketList::Walk walk(list);
    ///     while (const MIDIPacket* packet = walk.next()) { ... }
    class Walk {
    public:
        explicit Walk(const MIDIPacketList& list) : left_(list.room_.first(list.used_)) {}
        /// Null at the end. The packet lasts until the next call.
        const MIDIPacket* next();

    private:
        std::span<const std::uint8_t> left_;
        MIDIPacket packet_;
    };

private:
    std::span<std::uint8_t> room_;
    std::size_t used_ = 0;
    std::uint32_t numPackets_ = 0;
};

/// Words of one or more Universal MIDI Packets (MIDI 2.0, "Universal MIDI Packet (UMP) Format").
struct MIDIEventPacket {
    static constexpr std::size_t mostWords = 64;

    std::uint64_t timeStamp = 0; ///< as of MIDIPacket
    std::uint32_t wordCount = 0; ///< up to `mostWords`
    std::array<std::uint32_t, mostWords> words = {};
};

/// The protocol in which channel messages are written.
enum class MidiProtocol : std::int32_t { midi1 = 1, midi2 = 2 };

struct MIDIEventList {
    MidiProtocol protocol = MidiProtocol::midi1;
    std::span<const MIDIEventPacket> packets; ///< not owned
};

} // namespace deckmate
