// Which of the two shapes of MIDI messages this system is served with.
#pragma once

#include <string_view>

namespace deckmate {

/// The variable of the environment that overrides the answer: "packets" or "events".
inline constexpr const char* midiPathVariable = "DECKMATE_MIDI_PATH";

/// Whether event lists are to be used: from kernel 6.5 on, the first with Universal MIDI Packets.
/// `release` is what uname(2) tells, `forced` the variable's value or nothing.
bool usesEventLists(std::string_view release, std::string_view forced);

} // namespace deckmate
