#include "device/MIDIRecvSDCardRemain.h"

namespace deckmate {

void MIDIRecvSDCardRemain::startSequence() {
    isListening_ = true;
}

void MIDIRecvSDCardRemain::receivedMidi(std::span<const std::uint8_t> message) {
    if (isListening_ && ORLODeviceInfo::isCardState(message)) {
        deviceInfo_->storeCardState(message);
    }
}

void MIDIRecvSDCardRemain::sequenceTimeOut(const std::string& description) {
    MIDISequenceBase::sequenceTimeOut(description);
    dispose();
}

void MIDIRecvSDCardRemain::dispose() {
    MIDISequenceBase::dispose();
    isListening_ = false;
}

} // namespace deckmate
