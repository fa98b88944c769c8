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
        isKnown_ = isThere();
        changed_();
    });
}

void DeviceLink::MIDIManagerDisconnected() {
    isAsked_ = false;
    isKnown_ = false;
    changed_();
}

void DeviceLink::MIDIManagerReceivedData(const MIDIEventPacket& packet) {
    MIDISequenceManager::get().receivedMidi(packet);
}

void DeviceLink::MIDIManagerReceivedData_iOS13(const MIDIPacket& packet, bool isLast) {
    MIDISequenceManager::get().receivedMidi_iOS13(packet, isLast);
}

} // namespace deckmate::tools
