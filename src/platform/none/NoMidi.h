// MIDI on machines without a sequencer.
#pragma once

#include "platform/Midi.h"

#include <memory>

namespace deckmate {

/// There are never any endpoints, and nothing is announced. Ports can be made all the same.
std::unique_ptr<Midi> makeNoMidi();

} // namespace deckmate
