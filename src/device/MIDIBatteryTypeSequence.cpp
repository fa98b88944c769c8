#include "device/MIDIBatteryTypeSequence.h"

#include "device/MIDIManager.h"

#include <array>

namespace deckmate {

namespace {

constexpr std::uint64_t waiting = 2;
constexpr std::size_t acknowledgementLength = 6;

} // namespace

void MIDIBatteryTypeSequence::startSequence() {
    markTimeOutWithDescription("CONTROL_SEQUENCE_BT_CHG_REQ");
    setSeq(waiting);
    MIDIManager::get().send(
        std::array<std::uint8_t, 8>{0xF0, 0x52, 0x00, 0x00, 0x31, 0x01, param_, 0xF7});
}

void MIDIBatteryTypeSequence::receivedMidi(std::span<const std::uint8_t> message) {
    if (seq() == waiting && message.size() == acknowledgementLength && message[4] == 0x00 &&
        message[5] == 0x10) {
        dispose();
    }
}

} // namespace deckmate
