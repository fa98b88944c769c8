// The end of the link to a recorder.
#pragma once

#include "device/MIDIManager.h"
#include "device/MIDISequenceManager.h"

namespace deckmate::test {

/// Drops the link when it goes itself, as a program does at its end: after the link's users, and
/// before the MIDI system. Thread: main.
class LinkEnd {
public:
    LinkEnd() = default;
    ~LinkEnd() {
        MIDIManager::s_midi().reset();
        MIDISequenceManager::s_seq_controller().reset();
    }
    LinkEnd(const LinkEnd&) = delete;
    LinkEnd& operator=(const LinkEnd&) = delete;
    LinkEnd(LinkEnd&&) = delete;
    LinkEnd& operator=(LinkEnd&&) = delete;
};

} // namespace deckmate::test
