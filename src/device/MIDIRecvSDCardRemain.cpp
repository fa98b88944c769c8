#include "device/MIDIRecvSDCardRemain.h"

namespace deckmate {

namespace {

constexpr std::uint64_t listening = 1;

} // namespace

void MIDIRecvSDCardRemain::startSequence() {
    seq_ = listening;
}

void MIDIRecvSDCardRemain::receivedMidi(std::span<const std::uint8_t> message) {
    if (seq_ == listening && ORLODeviceInfo::isCardState(message)) {
        deviceInfo_->storeCardState(message);
    }
}

void MIDIRecvSDCardRemain::sequenceTimeOut(const std::string& description) {
    MIDISequenceBase::sequenceTimeOut(description);
    dispose();
}

void MIDIRecvSDCardRemain::dispose() {
    MIDISequenceBase::dispose();
    seq_ = 0;
}

} // namespace deckmate
