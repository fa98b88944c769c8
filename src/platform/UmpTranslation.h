// MIDI 1.0 bytes as Universal MIDI Packets, and back (MIDI 2.0, "Universal MIDI Packet (UMP) Format
// and MIDI 2.0 Protocol", for the protocol MIDI 1.0).
#pragma once

#include "platform/MidiPackets.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace deckmate {

/// Turns one stream of bytes, cut anywhere, into Universal MIDI Packets of group 0: System
/// Exclusive as type 3, channel voice messages as type 2, the other system messages as type 1.
///
/// The packets don't depend on the cut: of a System Exclusive message up to six bytes are held back
/// until it is known whether they are its last. What is no message (data without a status,
/// undefined statuses, a lone end) is dropped. A message that another one breaks off gets no end.
class UmpEncoder {
public:
    /// Appends the words of the packets that these bytes complete.
    void encode(std::span<const std::uint8_t> bytes, std::vector<std::uint32_t>& words);
    /// Forgets the message that has begun: bytes were lost.
    void reset();

private:
    static constexpr std::size_t sysExBytes = 6;

    void takeStatus(std::uint8_t status, std::vector<std::uint32_t>& words);
    void takeData(std::uint8_t data, std::vector<std::uint32_t>& words);
    void takeSysExData(std::uint8_t data, std::vector<std::uint32_t>& words);
    void putSysEx(bool isEnd, std::vector<std::uint32_t>& words);

    bool isInSysEx_ = false;
    bool hasStarted_ = false; ///< a packet of the System Exclusive message has been put out
    std::array<std::uint8_t, sysExBytes> held_ = {};
    std::size_t heldCount_ = 0;

    std::uint8_t status_ = 0; ///< whose data come next; 0 for none
    std::uint8_t firstData_ = 0;
    bool hasFirstData_ = false;
};

/// Appends the MIDI 1.0 bytes of the packets, one behind the other. Left out are packets that MIDI
/// 1.0 has no bytes for, invalid ones, and one that is cut short at the end. Of data bytes the
/// eighth bit is dropped.
void decodeUmp(std::span<const std::uint32_t> words, std::vector<std::uint8_t>& bytes);

/// The number of words of a Universal MIDI Packet, 1 to 4, by its first one.
std::size_t wordsOfUmp(std::uint32_t firstWord);

/// Puts packets of MIDI 1.0 into event packets: a new one after each message that is complete, and
/// where the next packet doesn't fit. Words that are cut short at the end are left out.
std::vector<MIDIEventPacket> packEvents(std::span<const std::uint32_t> words,
                                        std::uint64_t timeStamp);

} // namespace deckmate
