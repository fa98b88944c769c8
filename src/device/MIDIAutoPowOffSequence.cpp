#include "device/MIDIAutoPowOffSequence.h"

#include "device/MIDIManager.h"

#include <array>

namespace deckmate {

namespace {

constexpr std::uint64_t waiting = 2;
constexpr std::size_t acknowledgementLength = 6;

} // namespace

void MIDIAutoPowOffSequence::startSequence() {
    markTimeOutWithDescription("CONTROL_SEQUENCE_APO_CHG_REQ");
    setSeq(waiting);
    MIDIManager::get().send(
        std::array<std::uint8_t, 8>{0xF0, 0x52, 0x00, 0x00, 0x31, 0x02, param_, 0xF7});
}

void MIDIAutoPowOffSequence::receivedMidi(std::span<const std::uint8_t> message) {
    if (seq() == waiting && message.size() == acknowledgementLength && message[4] == 0x00 &&
        message[5] == 0x11) {
        dispose();
    }
}

} // namespace deckmate
