// MIDI by the ALSA sequencer.
#pragma once

#include "platform/Midi.h"

#include <memory>
#include <string>

namespace deckmate {

/// Needs the RunLoop, which must outlive it. An endpoint is a port of another sequencer client that
/// can be subscribed to; its client's name is the one it had when one of its ports last came or
/// changed. The program is one client of the sequencer, which bears the name of the Midi client
/// that was created last. Where there is no sequencer, or no permission to use it, there are no
/// endpoints, and none appear later. Whether there are event lists is told by the kernel and the
/// environment (platform/alsa/MidiPath.h). `whyNot` becomes the reason for being without sequencer,
/// or empty.
std::unique_ptr<Midi> makeAlsaMidi(std::string* whyNot = nullptr);

} // namespace deckmate
