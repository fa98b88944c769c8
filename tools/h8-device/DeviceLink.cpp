#include "DeviceLink.h"

#include <utility>

namespace deckmate::tools {

DeviceLink::DeviceLink(std::function<void()> changed) : changed_(std::move(changed)) {
    MIDIManager::get().setDelegate(this);
    MIDIManager::get().scanOrloDevice();
}

DeviceLink::~DeviceLink() {
    MIDIManager::s_midi().reset();
    MIDISequenceManager::s_seq_controller().reset();
}

bool DeviceLink::isSilent() const {
    return isAsked_ && !isKnown_ && !MIDISequenceManager::get().isSeqRunning();
}

void DeviceLink::MIDIManagerFound() {
    MIDIManager::get().connect();
}

void DeviceLink::MIDIManagerConnected() {
    isAsked_ = true;
    MIDISequenceManager::get().startConnectSeq([this] {
        // Also called for messages that come unasked, when the questions may have had no answers.
        isKnown_ = isThere() && (isKnown_ || isAnswer_);
        changed_();
    });
}

void DeviceLink::MIDIManagerDisconnected() {
    isAsked_ = false;
    isKnown_ = false;
    changed_();
}

void DeviceLink::MIDIManagerReceivedData(const MIDIEventPacket& packet) {
    isAnswer_ = MIDISequenceManager::get().isSeqRunning();
    MIDISequenceManager::get().receivedMidi(packet);
}

void DeviceLink::MIDIManagerReceivedData_iOS13(const MIDIPacket& packet, bool isLast) {
    isAnswer_ = MIDISequenceManager::get().isSeqRunning();
    MIDISequenceManager::get().receivedMidi_iOS13(packet, isLast);
}

} // namespace deckmate::tools
