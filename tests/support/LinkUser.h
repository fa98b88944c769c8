// One who uses the link to a recorder as the main window does.
#pragma once

#include "device/MIDIManager.h"
#include "device/MIDISequenceManager.h"
#include "support/LinkEnd.h"

namespace deckmate::test {

/// Is the link's delegate from the beginning: connects to what is found, and has the sequences take
/// what is received. Drops the link in the end, which has to be before the MIDI system goes.
/// Thread: main.
class LinkUser : public MIDIManagerCB {
public:
    LinkUser() { MIDIManager::get().setDelegate(this); }

    void MIDIManagerFound() override { MIDIManager::get().connect(); }
    void MIDIManagerConnected() override {}
    void MIDIManagerDisconnected() override {}
    void MIDIManagerReceivedData(const MIDIEventPacket& packet) override {
        MIDISequenceManager::get().receivedMidi(packet);
    }
    void MIDIManagerReceivedData_iOS13(const MIDIPacket& packet, bool isLast) override {
        MIDISequenceManager::get().receivedMidi_iOS13(packet, isLast);
    }

private:
    LinkEnd end_;
};

} // namespace deckmate::test
