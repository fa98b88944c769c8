#include "device/MIDISettingSequence.h"

#include "device/MIDIManager.h"

#include <array>
#include <cstddef>

namespace deckmate {

namespace {

constexpr std::uint64_t waiting = 2;
constexpr std::size_t acknowledgementLength = 6;

} // namespace

void MIDISettingSequence::startSequence() {
    markTimeOutWithDescription(setting_.timeOut);
    // An answer may come before sending returns.
    setSeq(waiting);
    MIDIManager::get().send(
        std::array<std::uint8_t, 8>{0xF0, 0x52, 0x00, 0x00, 0x31, setting_.code, param_, 0xF7});
}

void MIDISettingSequence::receivedMidi(std::span<const std::uint8_t> message) {
    if (seq() == waiting && message.size() == acknowledgementLength && message[4] == 0x00 &&
        message[5] == setting_.acknowledgement) {
        dispose();
    }
}

} // namespace deckmate
